// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "json/BwaJson.h"

#include <QString>
#include <QStringList>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include <simdjson.h>

namespace {

const std::size_t deepestNesting = 1024;
const std::size_t smallestCapacity = 4096;       // bytes of text
const std::size_t largestKeptCapacity = 1 << 20; // bytes of text that a kept parser can take
const char byteOrderMark[] = "\xEF\xBB\xBF";     // U+FEFF in UTF-8

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

QLatin1String latin1(std::string_view text)
{
    return QLatin1String(text.data(), static_cast<BwaSize>(text.size()));
}

// QString::fromUtf8() drops a leading U+FEFF, which it takes for a byte order mark. To keep one
// that belongs to the text, put another one in front, for Qt to drop.
QString stringOf(std::string_view text)
{
    if (isAscii(text)) { // as most texts are; converting ASCII is faster
        return latin1(text);
    }
    const std::string_view mark(byteOrderMark);
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

/** Turns a parsed text into variants. The recursion is as deep as the text is nested. */
class VariantBuilder
{
public:
    QVariant variantOf(simdjson::dom::element element);
    /** How deep the text is nested: 2 for an array within an array. */
    std::size_t depth() const { return m_deepest; }
    /** The path to the first key that an object has twice, as BwaJson::parse() returns it. */
    QStringList repeated() const { return m_repeated; }

private:
    void addMember(QVariantMap* map, const simdjson::dom::key_value_pair& member);
    QVariant mapOf(simdjson::dom::object object);
    QVariant listOf(simdjson::dom::array array);

    // The path, from the value being built, to the first key that an object has twice.
    QStringList m_repeated;
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

QVariant VariantBuilder::mapOf(simdjson::dom::object object)
{
    QVariantMap map;
    m_deepest = std::max(m_deepest, ++m_depth);
    for (const simdjson::dom::key_value_pair member : object) {
        addMember(&map, member);
    }
    --m_depth;
    return map;
}

void VariantBuilder::addMember(QVariantMap* map, const simdjson::dom::key_value_pair& member)
{
    const bool isFirst = m_repeated.isEmpty();
    const BwaSize size = map->size();
    const QString key = stringOf(member.key);
    // insert() and append() copy the value they are given, an assignment moves it.
    *map->insert(key, QVariant()) = variantOf(member.value);
    if (isFirst && (map->size() == size || !m_repeated.isEmpty())) {
        m_repeated.prepend(key);
    }
}

QVariant VariantBuilder::listOf(simdjson::dom::array array)
{
    QVariantList list;
    m_deepest = std::max(m_deepest, ++m_depth);
    for (const simdjson::dom::element item : array) {
        const bool isFirst = m_repeated.isEmpty();
        list.append(QVariant());
        list.last() = variantOf(item);
        if (isFirst && !m_repeated.isEmpty()) {
            m_repeated.prepend(QString::number(list.size() - 1));
        }
    }
    --m_depth;
    return list;
}

QString withoutLoneSurrogates(QString text)
{
    for (BwaSize i = 0; i < text.size(); ++i) {
        const bool isPair =
            text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate();
        if (isPair) {
            ++i;
        } else if (text.at(i).isSurrogate()) {
            text[i] = QChar(QChar::ReplacementCharacter);
        }
    }
    return text;
}

// QString::toUtf8() would write "?" for a surrogate without its pair, and JSON is to have U+FFFD.
QByteArray utf8Of(const QString& text)
{
    return text.isValidUtf16() ? text.toUtf8() : withoutLoneSurrogates(text).toUtf8();
}

bool needsEscape(char byte)
{
    return static_cast<unsigned char>(byte) < 0x20 || byte == '"' || byte == '\\';
}

/** Writes a value as text. It calls itself as deep as the value is nested. */
class Writer
{
public:
    /** False when @a value has no text. */
    bool write(const QVariant& value);
    QByteArray text() const { return m_text; }

private:
    void writeString(const QString& text);
    void writeEscape(char byte);
    template <typename Number>
    void writeNumber(Number number);
    template <typename Number>
    void writeRealNumber(Number number);
    bool writeScalar(const QVariant& value);
    bool writeElements(const QVariantList& list);
    bool writeMembers(const QVariantMap& map);

    QByteArray m_text;
    std::size_t m_depth = 0;
};

bool Writer::write(const QVariant& value)
{
    const bool isMap = value.userType() == QMetaType::QVariantMap;
    const bool isList =
        value.userType() == QMetaType::QVariantList || value.userType() == QMetaType::QStringList;
    if (!isMap && !isList) {
        return writeScalar(value);
    }
    if (m_depth == deepestNesting) {
        return false;
    }
    ++m_depth;
    const bool isWritten = isMap ? writeMembers(value.toMap()) : writeElements(value.toList());
    --m_depth;
    return isWritten;
}

bool Writer::writeElements(const QVariantList& list)
{
    const char* before = "[";
    for (const QVariant& element : list) {
        m_text += before;
        if (!write(element)) {
            return false;
        }
        before = ",";
    }
    m_text += list.isEmpty() ? "[]" : "]";
    return true;
}

bool Writer::writeMembers(const QVariantMap& map)
{
    const char* before = "{";
    for (auto member = map.constBegin(); member != map.constEnd(); ++member) {
        m_text += before;
        writeString(member.key());
        m_text += ':';
        if (!write(member.value())) {
            return false;
        }
        before = ",";
    }
    m_text += map.isEmpty() ? "{}" : "}";
    return true;
}

bool Writer::writeScalar(const QVariant& value)
{
    switch (value.userType()) {
    case QMetaType::UnknownType:
    case QMetaType::Nullptr:
        m_text += "null";
        return true;
    case QMetaType::Bool:
        m_text += value.toBool() ? "true" : "false";
        return true;
    case QMetaType::SChar:
    case QMetaType::Short:
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
        writeNumber(value.toLongLong());
        return true;
    case QMetaType::UChar:
    case QMetaType::UShort:
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        writeNumber(value.toULongLong());
        return true;
    case QMetaType::Float:
        writeRealNumber(value.toFloat());
        return true;
    case QMetaType::Double:
        writeRealNumber(value.toDouble());
        return true;
    case QMetaType::QString:
        writeString(value.toString());
        return true;
    default:
        return false;
    }
}

template <typename Number>
void Writer::writeNumber(Number number)
{
    char digits[32];
    const char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    m_text.append(digits, static_cast<BwaSize>(end - digits));
}

// Adds ".0" to a number without fraction and exponent. Otherwise it would be read back as an
// integer, and 2^64 would be too large for one.
template <typename Number>
void Writer::writeRealNumber(Number number)
{
    if (!std::isfinite(number)) {
        m_text += "null";
        return;
    }
    const BwaSize start = m_text.size();
    writeNumber(number);
    const QByteArray digits =
        QByteArray::fromRawData(m_text.constData() + start, m_text.size() - start);
    if (!digits.contains('.') && !digits.contains('e')) {
        m_text += ".0";
    }
}

void Writer::writeString(const QString& text)
{
    const QByteArray utf8 = utf8Of(text);
    const char* const end = utf8.constData() + utf8.size();
    m_text += '"';
    for (const char* rest = utf8.constData(); rest != end;) {
        const char* const plainEnd = std::find_if(rest, end, needsEscape);
        m_text.append(rest, static_cast<BwaSize>(plainEnd - rest));
        rest = plainEnd;
        for (; rest != end && needsEscape(*rest); ++rest) {
            writeEscape(*rest);
        }
    }
    m_text += '"';
}

void Writer::writeEscape(char byte)
{
    const std::string_view named = "\"\\\b\f\n\r\t";
    const char letters[] = "\"\\bfnrt";
    const char digits[] = "0123456789abcdef";
    const std::size_t place = named.find(byte);
    if (place != std::string_view::npos) {
        const char escape[] = {'\\', letters[place]};
        m_text.append(escape, sizeof escape);
    } else {
        const char escape[] = {'\\', 'u', '0', '0', digits[byte >> 4], digits[byte & 0xF]};
        m_text.append(escape, sizeof escape);
    }
}

} // namespace

QVariant BwaJson::parse(const QByteArray& text, bool* ok)
{
    return parse(text, ok, nullptr);
}

QVariant BwaJson::parse(const QByteArray& text, bool* ok, QStringList* repeated)
{
    // Each thread has one parser and uses its buffers again. After a large text it is made anew, so
    // that its large buffers are freed.
    thread_local simdjson::dom::parser parser;

    // simdjson counts a value in the innermost container as one more level, an empty container as
    // none. So it is given one level more than is allowed, and the builder counts exactly.
    simdjson::error_code error = parser.capacity() > 0
        ? simdjson::SUCCESS
        : parser.allocate(smallestCapacity, deepestNesting + 1);
    if (text.startsWith(byteOrderMark)) { // newer versions of simdjson skip it
        error = simdjson::UTF8_ERROR;
    }
    simdjson::dom::element root;
    if (!error) {
        error = parser.parse(text.constData(), static_cast<std::size_t>(text.size())).get(root);
    }
    VariantBuilder builder;
    const QVariant value = error ? QVariant() : builder.variantOf(root);
    if (parser.capacity() > largestKeptCapacity) {
        parser = simdjson::dom::parser();
    }
    const bool isAccepted = !error && builder.depth() <= deepestNesting;
    if (ok) {
        *ok = isAccepted;
    }
    if (repeated) {
        *repeated = isAccepted ? builder.repeated() : QStringList();
    }
    return isAccepted ? value : QVariant();
}

QByteArray BwaJson::write(const QVariant& value, bool* ok)
{
    Writer writer;
    const bool isWritten = writer.write(value);
    if (ok) {
        *ok = isWritten;
    }
    return isWritten ? writer.text() : QByteArray();
}
