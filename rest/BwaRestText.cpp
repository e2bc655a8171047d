// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiRequest.h"
#include "rest/BwaRestProblem.h"
#include "rest/BwaRestText_p.h"

#include <algorithm>
#include <cstring>

namespace {

bool isAscii(const QString& text)
{
    return std::all_of(text.begin(), text.end(),
                       [](QChar character) { return character.unicode() < 0x80; });
}

bool isTagByte(char byte)
{
    return byte == '!' || (static_cast<quint8>(byte) > '"' && byte != '%' && byte != 0x7f);
}

// The position of the comma that ends the element at @a begin, or of the end of the list.
BwaSize endOfElement(const QByteArray& list, BwaSize begin)
{
    bool isQuoted = false;
    for (BwaSize position = begin; position < list.size(); ++position) {
        if (list.at(position) == '"') {
            isQuoted = !isQuoted;
        } else if (list.at(position) == ',' && !isQuoted) {
            return position;
        }
    }
    return list.size();
}

QString notNull(const QString& text)
{
    return text.isNull() ? QString::fromLatin1("") : text;
}

} // namespace

// Qt replaces bytes that are not UTF-8; encoding the text again shows whether it did. The blank in
// front keeps a byte order mark, which Qt would drop.
QString BwaRestText::fromUtf8(const QByteArray& bytes)
{
    const QByteArray marked = ' ' + bytes;
    const QString text = QString::fromUtf8(marked);
    if (text.toUtf8() != marked) {
        throw BwaRestProblem(400, QStringLiteral("The request holds a text that is no UTF-8"));
    }
    return text.mid(1);
}

QString BwaRestText::fromUtf8(const QString& bytes)
{
    return isAscii(bytes) ? notNull(bytes) : fromUtf8(bytes.toLatin1());
}

QList<QPair<QString, QString>> BwaRestText::urlEncodedPairs(const QString& text)
{
    QList<QPair<QString, QString>> pairs;
    for (const QString& pair : text.split(QLatin1Char('&'))) {
        if (pair.isEmpty()) {
            continue;
        }
        const BwaSize equals = pair.indexOf(QLatin1Char('='));
        const QString name = equals < 0 ? pair : pair.left(equals);
        const QString value = equals < 0 ? QString() : pair.mid(equals + 1);
        pairs.append(qMakePair(fromUtf8(BwaCgiRequest::urlDecode(name)),
                               fromUtf8(BwaCgiRequest::urlDecode(value))));
    }
    return pairs;
}

bool BwaRestText::isToken(const QByteArray& name)
{
    const auto isTokenByte = [](char byte) {
        return (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'z') ||
            (byte >= 'A' && byte <= 'Z') || (byte != '\0' && std::strchr("!#$%&'*+-.^_`|~", byte));
    };
    return !name.isEmpty() && std::all_of(name.begin(), name.end(), isTokenByte);
}

bool BwaRestText::isHeaderValue(const QByteArray& value)
{
    return std::none_of(value.begin(), value.end(),
                        [](char byte) { return byte == '\r' || byte == '\n' || byte == '\0'; });
}

QByteArray BwaRestText::entityTag(const QByteArray& tag)
{
    QByteArray quoted = "\"";
    for (const char byte : tag) {
        quoted +=
            isTagByte(byte) ? QByteArray(1, byte) : '%' + QByteArray(1, byte).toHex().toUpper();
    }
    return quoted + '"';
}

bool BwaRestText::listHasEntityTag(const QByteArray& list, const QByteArray& tag)
{
    for (BwaSize begin = 0; begin < list.size();) {
        const BwaSize end = endOfElement(list, begin);
        const QByteArray element = list.mid(begin, end - begin).trimmed();
        if (element == "*" || element == tag || element == "W/" + tag) {
            return true;
        }
        begin = end + 1;
    }
    return false;
}

QByteArray BwaRestText::encodedPath(const QString& path)
{
    return path.toUtf8().toPercentEncoding("/!$&'()*+,;=:@");
}

QByteArray BwaRestText::encodedUrl(const QString& url)
{
    // Qt 6 always encodes percent signs. The URL's own are restored, so that its escapes stay as
    // they are.
    return url.toUtf8().toPercentEncoding("/!$&'()*+,;=:@?#[]").replace("%25", "%");
}
