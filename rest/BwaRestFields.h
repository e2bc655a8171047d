// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTFIELDS_H
#define BWARESTFIELDS_H

#include "rest/BwaRestCall.h"
#include "rest/BwaRestRule.h"
#include "rest/BwaRestSchema.h"
#include "rest/BwaRestType.h"

#include <QString>
#include <QVariant>

#include <functional>
#include <optional>
#include <utility>

/**
 * The fields of a struct, declared once. This reads them from a call and reports all errors at
 * once, changes them as a patch says, and writes them as JSON.
 *
 *     struct Device {
 *         qint64 id = 0;
 *         QString name;
 *         int port = 80;
 *     };
 *     const auto deviceFields = BwaRestFields<Device>()
 *         .add("id", &Device::id, BwaRestRule::any().readOnly().asText())
 *         .add("name", &Device::name, BwaRestRule::length(1, 64))
 *         .add("port", &Device::port, BwaRestRule::range(1, 65535).orDefault());
 *
 *     api.post("/devices", deviceFields, [&](const BwaRestCall&, const Device& device) {
 *         return BwaRestReply(deviceFields.json(store.insert(device)), 201);
 *     });
 *
 * A field is a bool, an integer, a double, a QString, QByteArray (base64), QUuid, QDateTime (RFC
 * 3339, read and written in UTC), a QList of these, or a std::optional, which may be null; or a
 * struct with fields of its own. Nothing is converted: "1" is no number, and 1.0 is no integer.
 *
 * T must have a default constructor and be copyable. Any thread may use this.
 */
template <class T>
class BwaRestFields : public BwaRestSchema
{
public:
    /**
     * Adds a field @a name, in UTF-8, whose value is in @a member.
     * @throws std::logic_error when there is a field of that name, or @a rule does not fit the type
     *         M, such as a range for a text
     */
    template <class M>
    BwaRestFields& add(const char* name, M T::*member, const BwaRestRule& rule = BwaRestRule())
    {
        return addAs(name, member, rule, BwaRestType<M>(rule));
    }
    /**
     * The same for a member that is a struct, or a QList or std::optional of structs; @a nested has
     * the fields of the struct.
     */
    template <class M, class N>
    BwaRestFields& add(const char* name, M T::*member, const BwaRestFields<N>& nested,
                       const BwaRestRule& rule = BwaRestRule())
    {
        return addAs(name, member, rule, BwaRestType<M>(rule, nested));
    }
    /**
     * Adds a rule for the struct as a whole, called when each of its fields is valid. It returns
     * null when the struct is valid, otherwise the reason why not, which the client sees.
     */
    BwaRestFields& check(const std::function<QString(const T&)>& rule)
    {
        m_checks.push_back(
            [rule](const void* value) { return rule(*static_cast<const T*>(value)); });
        return *this;
    }
    /** Ignores members that are no fields. Without this call they are errors. */
    BwaRestFields& keepUnknown()
    {
        m_keepsUnknown = true;
        return *this;
    }

    /**
     * Reads a T from the body, or from the query when the method is GET or HEAD. In a query, a list
     * is a repeated name.
     *
     * @throws BwaRestProblem as BwaRestCall::json() does; 422 when a field is missing or wrong, or
     *         a member is unknown or repeated. Its member "errors" is a list of the first 100
     *         errors, each with "pointer", as in "#/ports/0" (RFC 6901), and "detail", which never
     *         contains what was sent
     */
    T read(const BwaRestCall& call) const
    {
        T value{};
        readCall(call, &value, Whole);
        return value;
    }
    /**
     * Changes @a target as the body, a merge patch (RFC 7396), says. Absent fields stay as they
     * are. Null makes a std::optional empty and gives a field with orDefault() its default. A list
     * is replaced as a whole.
     *
     * @throws BwaRestProblem as read() does; @a target is then unchanged
     */
    void patch(const BwaRestCall& call, T& target) const
    {
        T changed = target;
        readCall(call, &changed, Merge);
        target = std::move(changed);
    }
    /**
     * All fields of @a value as a JSON object. A double that is not finite and a time outside the
     * years 1 to 9999 become null.
     */
    QVariantMap json(const T& value) const { return writeObject(&value); }

private:
    template <class M, class Enable>
    friend class BwaRestType;

    template <class M>
    BwaRestFields& addAs(const char* name, M T::*member, const BwaRestRule& rule,
                         const BwaRestType<M>& type)
    {
        const auto read = [member, type](const QVariant& json, void* target, Reading reading) {
            return type.read(json, static_cast<T*>(target)->*member, reading);
        };
        const auto write = [member, type](const void* value) {
            return type.json(static_cast<const T*>(value)->*member);
        };
        const auto reset = [member](void* target) {
            static_cast<T*>(target)->*member = T().*member;
        };
        const bool isReset = rule.mayBeAbsent && !isOptional(member);
        BwaRestSchema::add({QString::fromUtf8(name), rule, type.description(), read,
                            isReset ? reset : std::function<void(void*)>(), write});
        return *this;
    }

    template <class M>
    static constexpr bool isOptional(M T::* /*member*/)
    {
        return false;
    }
    template <class M>
    static constexpr bool isOptional(std::optional<M> T::* /*member*/)
    {
        return true;
    }
};

#endif
