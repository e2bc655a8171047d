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

/** The fields of some struct: what BwaRestFields is without its type. Any thread may use it. */
class BWA_REST_EXPORT BwaRestSchema
{
public:
    /** How members of an object become fields. */
    enum Reading {
        Whole, /**< The struct is new: what is absent has its default or is an error. */
        Merge  /**< A merge patch (RFC 7396): what is absent stays. */
    };

    /** Its JSON Schema (draft 2020-12). */
    QVariantMap description() const;
    /** That of a merge patch. */
    QVariantMap mergeDescription() const;
    /** @a description, a JSON Schema with a type, that takes null, too. */
    static QVariantMap nullable(QVariantMap description);

protected:
    /** @cond INTERNAL one field; the functions get the struct */
    struct Field {
        QString name;
        BwaRestRule rule;
        QVariantMap description;
        std::function<BwaRestErrors(const QVariant& json, void* target, Reading reading)> read;
        std::function<void(void* target)> reset; // takes JSON's null; empty: read() does
        std::function<QVariant(const void* value)> write;
    };
    /** @endcond */

    BwaRestSchema() = default;

    /** @throws std::logic_error when there is one of that name */
    void add(const Field& field);
    /** Reads an object into the struct at @a target, which errors leave half read. */
    BwaRestErrors readObject(const QVariant& json, void* target, Reading reading) const;
    /** The same with the body of @a call, or the query of a GET. @throws BwaRestProblem */
    void readCall(const BwaRestCall& call, void* target, Reading reading) const;
    /** The object of the struct at @a value. */
    QVariantMap writeObject(const void* value) const;

    /** As BwaRestFields::check() got them. */
    std::vector<std::function<QString(const void*)>> m_checks;
    /** As BwaRestFields::keepUnknown() has it. */
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
