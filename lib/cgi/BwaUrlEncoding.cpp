// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// One scan splits the text. It looks only at the kind of each character. In "a=1+2&b=3" the name
// "a" ends at the first character that is an equals sign or a separator, and its value "1+2" at the
// first separator. The scan sees on its way that the value has an encoded character and the name
// has none, so only the value is decoded.
//
// The same code reads 16-bit characters and Latin-1 bytes, so that the bytes of a body need not be
// converted first.

#include "BwaGlobal.h"
#include "cgi/BwaUrlEncoding_p.h"

#include <algorithm>
#include <array>

namespace {

// The kinds of characters.
const unsigned char plain = 0;
const unsigned char encoded = 1; // a plus, or the start of an escape
const unsigned char equalsSign = 2;
const unsigned char separator = 4;

constexpr std::array<unsigned char, 256> kindsByCode()
{
    std::array<unsigned char, 256> kinds = {};
    kinds['%'] = encoded;
    kinds['+'] = encoded;
    kinds['='] = equalsSign;
    kinds['&'] = separator;
    kinds[';'] = separator;
    return kinds;
}

constexpr std::array<unsigned char, 256> kinds = kindsByCode();

unsigned char kindOf(char character)
{
    return kinds[static_cast<unsigned char>(character)];
}

unsigned char kindOf(QChar character)
{
    return character.unicode() < kinds.size() ? kinds[character.unicode()] : plain;
}

QChar wide(char character)
{
    return QLatin1Char(character);
}

QChar wide(QChar character)
{
    return character;
}

QString plainCopy(const char* begin, const char* end)
{
    return QString::fromLatin1(begin, static_cast<BwaSize>(end - begin));
}

QString plainCopy(const QChar* begin, const QChar* end)
{
    return QString(begin, static_cast<BwaSize>(end - begin));
}

int hexDigitValue(QChar character)
{
    const ushort code = character.unicode();
    if (code >= '0' && code <= '9') {
        return code - '0';
    }
    if (code >= 'a' && code <= 'f') {
        return code - 'a' + 10;
    }
    return code >= 'A' && code <= 'F' ? code - 'A' + 10 : -1;
}

// The number that the two characters of an escape mean, or -1. As in Qt's base-16 conversion, there
// may also be a single digit with a blank on either side or a plus before it.
int escapedCode(QChar first, QChar second)
{
    const int high = hexDigitValue(first);
    const int low = hexDigitValue(second);
    if (high >= 0 && low >= 0) {
        return 16 * high + low;
    }
    if (high >= 0) {
        return second.isSpace() ? high : -1;
    }
    return first.isSpace() || first == QLatin1Char('+') ? low : -1;
}

// Decodes the characters from @a read up to @a end into @a written. Returns the end of the result.
template <typename Character>
QChar* decode(const Character* read, const Character* end, QChar* written)
{
    while (read < end) {
        const QChar character = wide(*read);
        const bool isEscape = character == QLatin1Char('%') && end - read > 2;
        const int code = isEscape ? escapedCode(wide(read[1]), wide(read[2])) : -1;
        if (code >= 0) {
            *written++ = static_cast<ushort>(code);
            read += 3;
        } else {
            *written++ = character == QLatin1Char('+') ? QChar(QLatin1Char(' ')) : character;
            ++read;
        }
    }
    return written;
}

template <typename Character>
QString decodedCopy(const Character* begin, const Character* end)
{
    QString text(static_cast<BwaSize>(end - begin), Qt::Uninitialized);
    text.truncate(static_cast<BwaSize>(decode(begin, end, text.data()) - text.data()));
    return text;
}

// The position of the first separator at or after @a from; the size when there is none.
BwaSize firstSeparator(const QByteArray& text, BwaSize from)
{
    const auto isSeparator = [](char character) { return kindOf(character) == separator; };
    const auto found = std::find_if(text.begin() + from, text.end(), isSeparator);
    return static_cast<BwaSize>(found - text.begin());
}

/** Takes names and values off the front of a text. */
template <typename Character>
class Reader
{
public:
    Reader(const Character* begin, const Character* end)
        : m_read(begin)
        , m_end(end)
        , m_stop(plain)
    {
    }

    /** The text up to the next character of the kinds @a stops, decoded. Skips that character. */
    QString take(unsigned int stops)
    {
        const Character* const begin = m_read;
        const Character* end = skipPlain(begin);
        bool isEncoded = false;
        while (end < m_end && !(kindOf(*end) & stops)) {
            isEncoded = isEncoded || kindOf(*end) == encoded;
            end = skipPlain(end + 1);
        }
        m_stop = end < m_end ? kindOf(*end) : plain;
        m_read = end < m_end ? end + 1 : end;
        if (begin == end) {
            return QString();
        }
        return isEncoded ? decodedCopy(begin, end) : plainCopy(begin, end);
    }

    void takeVariables(QMultiHash<QString, QString>* variables)
    {
        do {
            const QString name = take(equalsSign | separator);
            variables->insert(name,
                              m_stop == equalsSign ? take(separator) : QString::fromLatin1(""));
        } while (m_stop != plain);
    }

private:
    const Character* skipPlain(const Character* read) const
    {
        while (read < m_end && kindOf(*read) == plain) {
            ++read;
        }
        return read;
    }

    const Character* m_read;
    const Character* m_end;
    unsigned int m_stop; // the kind of the character that ended the last piece; plain at the end
};

} // namespace

QString BwaUrlEncoding::decoded(const QString& text)
{
    if (text.isEmpty()) {
        return QString();
    }
    const bool isEncoded = text.contains(QLatin1Char('%')) || text.contains(QLatin1Char('+'));
    return isEncoded ? decodedCopy(text.constBegin(), text.constEnd())
                     : plainCopy(text.constBegin(), text.constEnd());
}

QMultiHash<QString, QString> BwaUrlEncoding::variables(const QString& text)
{
    QMultiHash<QString, QString> variables;
    Reader<QChar>(text.constBegin(), text.constEnd()).takeVariables(&variables);
    return variables;
}

// The variables can take fifty times the memory of their text. So while a text is long, its first
// half is decoded and freed before the second half is decoded.
QMultiHash<QString, QString> BwaUrlEncoding::variables(QByteArray latin1)
{
    const int longestWhole = 64 * 1024; // bytes
    if (const BwaSize nul = latin1.indexOf('\0'); nul >= 0) {
        latin1.truncate(nul);
    }
    QMultiHash<QString, QString> variables;
    while (latin1.size() > longestWhole) {
        const BwaSize half = firstSeparator(latin1, latin1.size() / 2);
        if (half == latin1.size()) {
            break;
        }
        Reader<char>(latin1.constBegin(), latin1.constBegin() + half).takeVariables(&variables);
        latin1 = latin1.mid(half + 1);
    }
    Reader<char>(latin1.constBegin(), latin1.constEnd()).takeVariables(&variables);
    return variables;
}
