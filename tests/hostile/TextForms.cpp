// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiRequest.h"
#include "hostile/Forms.h"
#include "hostile/Measuring.h"
#include "json/BwaJsonUtilities.h"
#include "support/HostileBodies.h"

#include <QVariant>

namespace {

void parseHeader(const QByteArray& value)
{
    const QString text = QString::fromLatin1(value);
    measure([&text] { return !BwaCgiRequest::parseGenericHeader(text).isEmpty(); });
}

void parseBackslashesInQuotes(int size)
{
    parseHeader("a;b=\"" + QByteArray(size / 2 * 2 + 1, '\\'));
}

void parseEscapesInQuotes(int size)
{
    parseHeader("a;b=\"" + repeated("\\x", size) + "\"");
}

void parseParameters(int size)
{
    parseHeader(repeated(";a=b", size));
}

void parseDistinctParameters(int size)
{
    QByteArray value;
    for (int i = 0; value.size() < size; ++i) {
        value += ";" + QByteArray::number(i) + "=";
    }
    parseHeader(value);
}

void parseElements(int size)
{
    parseHeader(QByteArray(size, ','));
}

void parseCookies(int size)
{
    const QString text = QString::fromLatin1(repeated("a=b; ", size));
    measure([&text] { return !BwaCgiEnvironment::parseCookies(text).isEmpty(); });
}

void decodeBase64(int size)
{
    const QVariant text = QString(size / 4 * 4, QLatin1Char('A'));
    QByteArray bytes;
    measure([&] { return BwaJsonUtilities::base64EncodedByteArrayValue(text, bytes); });
}

void decodeNearlyBase64(int size)
{
    const QVariant text = QString(QString(size / 4 * 4 + 3, QLatin1Char('A')) + QLatin1Char('!'));
    QByteArray bytes;
    measure([&] { return !BwaJsonUtilities::base64EncodedByteArrayValue(text, bytes); });
}

void decodeHex(int size)
{
    const QVariant text = QString(size / 2 * 2, QLatin1Char('a'));
    QByteArray bytes;
    measure([&] { return BwaJsonUtilities::hexEncodedByteArrayValue(text, bytes); });
}

// What the checks must notice: every step moves all that is left.
void takeFromTheFront(int size)
{
    QByteArray bytes(size, 'x');
    measure([&bytes] {
        while (!bytes.isEmpty()) {
            bytes.remove(0, 1);
        }
        return true;
    });
}

} // namespace

QList<Form> textForms()
{
    return {
        {"time", "backslashes-in-quotes", parseBackslashesInQuotes},
        {"time", "escapes-in-quotes", parseEscapesInQuotes},
        {"time", "parameters", parseParameters},
        {"time", "distinct-parameters", parseDistinctParameters},
        {"time", "elements", parseElements},
        {"time", "cookies", parseCookies},
        {"time", "base64", decodeBase64},
        {"time", "nearly-base64", decodeNearlyBase64},
        {"time", "hex", decodeHex},
        {"control", "taken-from-the-front", takeFromTheFront},
    };
}
