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
 * The fields of a struct, declared once: reads them from a call with all errors at once, changes
 * them as a patch says, and writes them.
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
 * 3339, read and written in UTC), a QList of these, or a std::optional, which takes null; or a
 * struct with fields of its own. Nothing is converted: "1" is no number, 1.0 is no integer.
 *
 * T is made by its default constructor, and copied. Any thread may use this.
 */
template <class T>
class BwaRestFields : public BwaRestSchema
{
public:
    /**
     * A field @a name, in UTF-8, for @a member.
     * @throws std::logic_error when there is one of that name, or @a rule says what M cannot keep
     *         to, such as a range of a text
     */
    template <class M>
    BwaRestFields& add(const char* name, M T::*member, const BwaRestRule& rule = BwaRestRule())
    {
        return addAs(name, member, rule, BwaRestType<M>(rule));
    }
    /** The same for a struct, or a QList or std::optional of it, whose fields @a nested has. */
    template <class M, class N>
    BwaRestFields& add(const char* name, M T::*member, const BwaRestFields<N>& nested,
                       const BwaRestRule& rule = BwaRestRule())
    {
        return addAs(name, member, rule, BwaRestType<M>(rule, nested));
    }
    /**
     * Has @a rule looked at a struct whose fields are all well; null says that it is, another text
     * why it is not, and the client sees it.
     */
    BwaRestFields& check(const std::function<QString(const T&)>& rule)
    {
        m_checks.push_back(
            [rule](const void* value) { return rule(*static_cast<const T*>(value)); });
        return *this;
    }
    /** Leaves members that are no field alone; otherwise they are errors. */
    BwaRestFields& keepUnknown()
    {
        m_keepsUnknown = true;
        return *this;
    }

    /**
     * What the body has, or the query when the method is GET or HEAD. In a query, a list is a name
     * that is repeated.
     *
     * @throws BwaRestProblem as BwaRestCall::json() does; 422 with a member "errors" when a field
     *         is missing or wrong, or a member unknown or repeated: a list of the first 100 with
     *         "pointer", as in "#/ports/0" (RFC 6901), and "detail", which never holds what was
     *         sent
     */
    T read(const BwaRestCall& call) const
    {
        T value{};
        readCall(call, &value, Whole);
        return value;
    }
    /**
     * Changes @a target as the body, a merge patch (RFC 7396), says: what is absent stays; null
     * makes an optional empty, and gives a field with orDefault() its default. A list is replaced
     * as a whole.
     *
     * @throws BwaRestProblem as read() does; @a target is as before then
     */
    void patch(const BwaRestCall& call, T& target) const
    {
        T changed = target;
        readCall(call, &changed, Merge);
        target = std::move(changed);
    }
    /** All fields of @a value. A double that is no finite number, and a time before the year 1 or
     * beyond 9999, become null. */
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
