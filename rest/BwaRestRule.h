// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTRULE_H
#define BWARESTRULE_H

#include "rest/BwaRestGlobal.h"

#include <QString>
#include <QVariant>

#include <optional>

/** A rule for the values of a field of BwaRestFields, beyond what its type requires. */
class BWA_REST_EXPORT BwaRestRule
{
public:
    /** A range; both ends belong to it. */
    struct Limits {
        qint64 least; /**< The smallest valid value. */
        qint64 most;  /**< The largest valid value. */
    };

    /** Any value of the type. */
    static BwaRestRule any();
    /** Numbers from @a least to @a most; in a list, each element. */
    static BwaRestRule range(qint64 least, qint64 most);
    /**
     * From @a least to @a most characters (code points) of a text, bytes of a byte array, or
     * elements of a list.
     */
    static BwaRestRule length(int least, int most);

    /**
     * The field may be absent or null. The member then has the value of its initializer in the
     * struct.
     */
    BwaRestRule& orDefault();
    /** The field is only written: what clients send in it is ignored. */
    BwaRestRule& readOnly();
    /**
     * An integer is written and read as a JSON string, because JavaScript rounds integers beyond
     * 2^53.
     */
    BwaRestRule& asText();

    /** @throws std::logic_error when this rule does not fit fields of @a type */
    void checkFor(const char* type, bool hasRange, bool hasLength, bool hasText) const;
    /** Moves what length() has set into the result. */
    BwaRestRule takenLengths();
    /** Whether length() allows @a size. */
    bool takesLength(qint64 size) const;
    /** The range in words, such as " from 1 to 5", or empty. */
    QString shownRange() const;
    /**
     * The lengths in words, such as " of 1 to 5 characters", or empty; @a unit is the last word.
     */
    QString shownLength(const char* unit) const;

    /**
     * The JSON Schema @a description with @a limits, if any, as the values of the keywords @a least
     * and @a most.
     */
    static QVariantMap limited(QVariantMap description, const std::optional<Limits>& limits,
                               const char* least, const char* most);

    std::optional<Limits> numbers; /**< What range() has set; none: any number of the type. */
    std::optional<Limits> lengths; /**< What length() has set; none: any length. */
    bool mayBeAbsent = false;      /**< orDefault() */
    bool isReadOnly = false;       /**< readOnly() */
    bool isText = false;           /**< asText() */
};

#endif
