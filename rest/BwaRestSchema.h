// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTSCHEMA_H
#define BWARESTSCHEMA_H

#include "rest/BwaRestErrors.h"
#include "rest/BwaRestGlobal.h"
#include "rest/BwaRestRule.h"

#include <QHash>
#include <QList>
#include <QPair>
#include <QString>
#include <QVariant>

#include <functional>
#include <vector>

class BwaRestCall;

/**
 * The part of BwaRestFields that does not depend on the type of the struct. Any thread may use it.
 */
class BWA_REST_EXPORT BwaRestSchema
{
public:
    /** How members of an object become fields. */
    enum Reading {
        Whole, /**< The struct is new: what is absent has its default or is an error. */
        Merge  /**< A merge patch (RFC 7396): what is absent stays. */
    };

    /** The JSON Schema of the struct (draft 2020-12). */
    QVariantMap description() const;
    /** The JSON Schema of a merge patch. */
    QVariantMap mergeDescription() const;
    /** The JSON Schema @a description, which has a type, changed so that null is valid, too. */
    static QVariantMap nullable(QVariantMap description);

protected:
    /** @cond INTERNAL one field; its functions are called with the struct */
    struct Field {
        QString name;
        BwaRestRule rule;
        QVariantMap description;
        std::function<BwaRestErrors(const QVariant& json, void* target, Reading reading)> read;
        std::function<void(void* target)> reset; // for null; empty: read() is called
        std::function<QVariant(const void* value)> write;
    };
    /** @endcond */

    BwaRestSchema() = default;

    /** @throws std::logic_error when there is a field of that name */
    void add(const Field& field);
    /**
     * Reads an object into the struct at @a target. When there are errors, only some members have
     * been read.
     */
    BwaRestErrors readObject(const QVariant& json, void* target, Reading reading) const;
    /** The same for the body of @a call, or the query of a GET. @throws BwaRestProblem */
    void readCall(const BwaRestCall& call, void* target, Reading reading) const;
    /** The JSON object for the struct at @a value. */
    QVariantMap writeObject(const void* value) const;

    /** The rules that BwaRestFields::check() has added. */
    std::vector<std::function<QString(const void*)>> m_checks;
    /** Whether BwaRestFields::keepUnknown() has been called. */
    bool m_keepsUnknown = false;

private:
    BwaRestErrors readMembers(const QVariantMap& members, void* target, Reading reading) const;
    static BwaRestErrors readMember(const QVariantMap& members, const Field& field, void* target,
                                    Reading reading);
    QVariantMap membersOfQuery(const QList<QPair<QString, QString>>& pairs,
                               BwaRestErrors* errors) const;

    std::vector<Field> m_fields;
    QHash<QString, QVariantMap> m_descriptions; // by their names
};

#endif
