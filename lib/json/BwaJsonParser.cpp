// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "json/BwaJsonParser_p.h"

#include <QString>

#include <string_view>

#include <simdjson.h>

namespace {

const std::size_t largestKeptCapacity = 1024 * 1024; // bytes of text that a kept parser can take

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

// As deep as the parser lets a text be nested.
QVariant variantOf(simdjson::dom::element element) // NOLINT(misc-no-recursion)
{
    switch (element.type()) {
    case simdjson::dom::element_type::OBJECT: {
        QVariantMap map;
        for (const auto& field : simdjson::dom::object(element)) {
            map.insert(stringOf(field.key), variantOf(field.value));
        }
        return map;
    }
    case simdjson::dom::element_type::ARRAY: {
        QVariantList list;
        for (const simdjson::dom::element item : simdjson::dom::array(element)) {
            list.append(variantOf(item));
        }
        return list;
    }
    case simdjson::dom::element_type::STRING:
        return stringOf(element);
    case simdjson::dom::element_type::INT64: {
        const qlonglong number = std::int64_t(element);
        return number < 0 ? QVariant(number) : QVariant(static_cast<qulonglong>(number));
    }
    case simdjson::dom::element_type::UINT64:
        return static_cast<qulonglong>(std::uint64_t(element));
    case simdjson::dom::element_type::DOUBLE:
        return double(element);
    case simdjson::dom::element_type::BOOL:
        return bool(element);
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
    const QVariant value = error ? QVariant() : variantOf(root);
    if (parser.capacity() > largestKeptCapacity) {
        parser = simdjson::dom::parser();
    }
    return value;
}
