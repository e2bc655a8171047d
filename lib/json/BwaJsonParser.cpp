// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "BwaRecentTexts_p.h"
#include "json/BwaJsonParser_p.h"

#include <QString>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include <simdjson.h>

namespace {

const std::size_t deepestNesting = 1024;
const std::size_t smallestCapacity = 4096;       // bytes of text
const std::size_t largestKeptCapacity = 1 << 20; // bytes of text that a kept parser can take

bool isAscii(std::string_view text)
{
    std::uint64_t bits = 0;
    for (; text.size() >= sizeof bits; text.remove_prefix(sizeof bits)) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data(), sizeof word);
        bits |= word;
    }
    for (const char byte : text) {
        bits |= static_cast<unsigned char>(byte);
    }
    return (bits & 0x8080808080808080U) == 0;
}

BwaLatin1 latin1(std::string_view text)
{
    return BwaLatin1(text.data(), static_cast<BwaSize>(text.size()));
}

// QString::fromUtf8() takes a leading U+FEFF for a byte order mark and drops it: one of our own.
QString stringOf(std::string_view text)
{
    if (isAscii(text)) { // nearly always, and faster then
        return latin1(text);
    }
    const std::string_view mark("\xEF\xBB\xBF");
    if (text.substr(0, mark.size()) == mark) {
        const std::string marked = std::string(mark).append(text);
        return QString::fromUtf8(marked.data(), static_cast<BwaSize>(marked.size()));
    }
    return QString::fromUtf8(text.data(), static_cast<BwaSize>(text.size()));
}

QVariant integerOf(qlonglong number)
{
    return number < 0 ? QVariant(number) : QVariant(static_cast<qulonglong>(number));
}

/** Turns a parsed text into variants. It calls itself as deep as the text is nested. */
class VariantBuilder
{
public:
    /** @a keys must outlive the builder. */
    explicit VariantBuilder(BwaRecentTexts& keys)
        : m_keys(keys)
    {
    }

    QVariant variantOf(simdjson::dom::element element);
    /** How many containers the innermost one of the text stands in, itself counted. */
    std::size_t depth() const { return m_deepest; }

private:
    QString keyOf(std::string_view text);
    QVariant mapOf(simdjson::dom::object object);
    QVariant listOf(simdjson::dom::array array);

    BwaRecentTexts& m_keys; // not owned
    std::size_t m_depth = 0;
    std::size_t m_deepest = 0;
};

QVariant VariantBuilder::variantOf(simdjson::dom::element element)
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

QString VariantBuilder::keyOf(std::string_view text)
{
    return isAscii(text) ? m_keys.textOf(latin1(text)) : stringOf(text);
}

QVariant VariantBuilder::mapOf(simdjson::dom::object object)
{
    QVariantMap map;
    m_deepest = std::max(m_deepest, ++m_depth);
    for (const simdjson::dom::key_value_pair field : object) {
        // Both containers would copy a value that is handed to them; assigned, it is moved in.
        *map.insert(keyOf(field.key), QVariant()) = variantOf(field.value);
    }
    --m_depth;
    return map;
}

QVariant VariantBuilder::listOf(simdjson::dom::array array)
{
    QVariantList list;
    m_deepest = std::max(m_deepest, ++m_depth);
    for (const simdjson::dom::element item : array) {
        list.append(QVariant());
        list.last() = variantOf(item);
    }
    --m_depth;
    return list;
}

} // namespace

QVariant BwaJsonParser::parse(const QByteArray& text, bool* ok)
{
    // Kept for its buffers, unless one large text has made them large.
    thread_local simdjson::dom::parser parser;
    thread_local BwaRecentTexts keys;

    // The parser does not count an empty innermost container, but does count a value in it.
    simdjson::error_code error = parser.capacity() > 0
        ? simdjson::SUCCESS
        : parser.allocate(smallestCapacity, deepestNesting + 1);
    simdjson::dom::element root;
    if (!error) {
        error = parser.parse(text.constData(), static_cast<std::size_t>(text.size())).get(root);
    }
    VariantBuilder builder(keys);
    const QVariant value = error ? QVariant() : builder.variantOf(root);
    if (parser.capacity() > largestKeptCapacity) {
        parser = simdjson::dom::parser();
    }
    *ok = !error && builder.depth() <= deepestNesting;
    return *ok ? value : QVariant();
}
