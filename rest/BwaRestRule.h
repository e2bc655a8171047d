// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTRULE_H
#define BWARESTRULE_H

#include "rest/BwaRestGlobal.h"

#include <QString>
#include <QVariant>

#include <optional>

/** What a field of BwaRestFields may hold, beyond what its type says. */
class BWA_REST_EXPORT BwaRestRule
{
public:
    /** Both ends are within. */
    struct Limits {
        qint64 least; /**< The smallest that is well. */
        qint64 most;  /**< The largest that is well. */
    };

    /** Whatever the type can hold. */
    static BwaRestRule any();
    /** Numbers from @a least to @a most; of a list, each element. */
    static BwaRestRule range(qint64 least, qint64 most);
    /** How many characters (code points) a text, bytes a byte array, elements a list may have. */
    static BwaRestRule length(int least, int most);

    /** It may be absent or null; the member then has the value of its initializer in the struct. */
    BwaRestRule& orDefault();
    /** It is written; what clients send in it is left alone. */
    BwaRestRule& readOnly();
    /** An integer is a text in JSON: JavaScript rounds those beyond 2^53. */
    BwaRestRule& asText();

    /** @throws std::logic_error when this says something that a field of @a type cannot keep to */
    void checkFor(const char* type, bool hasRange, bool hasLength, bool hasText) const;
    /** Takes what length() has said out of this. */
    BwaRestRule takenLengths();
    /** Whether length() allows @a size. */
    bool takesLength(qint64 size) const;
    /** " from 1 to 5", or empty. */
    QString shownRange() const;
    /** " of 1 to 5 characters", or empty; @a unit is the last word. */
    QString shownLength(const char* unit) const;

    /** @a description, a JSON Schema, with @a limits, if any, as the values of these keywords. */
    static QVariantMap limited(QVariantMap description, const std::optional<Limits>& limits,
                               const char* least, const char* most);

    std::optional<Limits> numbers; /**< What range() has said; none: as its type. */
    std::optional<Limits> lengths; /**< What length() has said; none: any. */
    bool mayBeAbsent = false;      /**< orDefault() */
    bool isReadOnly = false;       /**< readOnly() */
    bool isText = false;           /**< asText() */
};

#endif
