// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "json/BwaJsonParser_p.h"

#include <QString>

#include <string_view>

#include <simdjson.h>

namespace {

const std::size_t largestKeptCapacity = 1 << 20; // bytes of text that a kept parser can take

// QString::fromUtf8() takes a leading U+FEFF for a byte order mark and drops it: one of our own.
QString stringOf(std::string_view text)
{
    const std::string_view mark("\xEF\xBB\xBF");
    if (text.substr(0, mark.size()) == mark) {
        const std::string marked = std::string(mark).append(text);
        return QString::fromUtf8(marked.data(), static_cast<int>(marked.size()));
    }
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

QVariant variantOf(simdjson::dom::element element);

QVariantMap mapOf(simdjson::dom::object object)
{
    QVariantMap map;
    for (const simdjson::dom::key_value_pair field : object) {
        map.insert(stringOf(field.key), variantOf(field.value));
    }
    return map;
}

QVariantList listOf(simdjson::dom::array array)
{
    QVariantList list;
    for (const simdjson::dom::element item : array) {
        list.append(variantOf(item));
    }
    return list;
}

QVariant integerOf(qlonglong number)
{
    return number < 0 ? QVariant(number) : QVariant(static_cast<qulonglong>(number));
}

// Calls itself as deep as the parser lets a text be nested.
QVariant variantOf(simdjson::dom::element element)
{
    switch (element.type()) {
    case simdjson::dom::element_type::OBJECT:
        return mapOf(element.get_object().value_unsafe());
    case simdjson::dom::element_type::ARRAY:
        return listOf(element.get_array().value_unsafe());
    case simdjson::dom::element_type::STRING:
        return stringOf(element.get_string().value_unsafe());
    case simdjson::dom::element_type::INT64:
        return integerOf(element.get_int64().value_unsafe());
    case simdjson::dom::element_type::UINT64:
        return static_cast<qulonglong>(element.get_uint64().value_unsafe());
    case simdjson::dom::element_type::DOUBLE:
        return element.get_double().value_unsafe();
    case simdjson::dom::element_type::BOOL:
        return element.get_bool().value_unsafe();
    case simdjson::dom::element_type::NULL_VALUE:
        break;
    }
    return QVariant();
}

} // namespace

QVariant BwaJsonParser::parse(const QByteArray& text, bool* ok)
{
    // Kept for its buffers, unless one large text has made them large.
    thread_local simdjson::dom::parser parser;

    simdjson::dom::element root;
    const auto error =
        parser.parse(text.constData(), static_cast<std::size_t>(text.size())).get(root);
    *ok = !error;
    QVariant value = error ? QVariant() : variantOf(root);
    if (parser.capacity() > largestKeptCapacity) {
        parser = simdjson::dom::parser();
    }
    return value;
}
