// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiEnvironment.h"

#include "cgi/BwaAbstractCgiInput.h"
#include "cgi/BwaHeaderValueParser_p.h"
#include "cgi/BwaTextScanning_p.h"

namespace {

using BwaTextScanning::indexOfAny;
using BwaTextScanning::textBetween;

// The number that @a text holds in base 10. It is 0 when the text is no number, has a sign, or
// exceeds @a largest. Blanks around the digits are ignored, as Qt's own conversion does.
unsigned int decimalNumber(const QString& text, unsigned int largest)
{
    quint64 number = 0;
    const QString digits = text.trimmed();
    for (const QChar character : digits) {
        const int digit = character.unicode() - '0';
        if (digit < 0 || digit > 9) {
            return 0;
        }
        number = 10 * number + static_cast<unsigned int>(digit);
        if (number > largest) {
            return 0;
        }
    }
    return static_cast<unsigned int>(number);
}

unsigned short portNumber(const QString& text)
{
    return static_cast<unsigned short>(decimalNumber(text, 65535));
}

// The position after the digits that begin at @a position.
BwaSize skipDigits(const QString& text, BwaSize position)
{
    while (position < text.size() && text.at(position).isDigit()) {
        ++position;
    }
    return position;
}

// The position of the next "; ", or the end of the text.
BwaSize endOfCookie(const QString& text, BwaSize begin)
{
    BwaSize semicolon = indexOfAny<';'>(text, begin, text.size());
    while (semicolon + 1 < text.size() && text.at(semicolon + 1) != QLatin1Char(' ')) {
        semicolon = indexOfAny<';'>(text, semicolon + 1, text.size());
    }
    return semicolon + 1 < text.size() ? semicolon : text.size();
}

BwaHttpCookie cookieBetween(const QString& text, BwaSize begin, BwaSize end)
{
    const BwaSize equals = indexOfAny<'='>(text, begin, end);
    if (equals == end) {
        return BwaHttpCookie(QString::fromLatin1(""), textBetween(text, begin, end));
    }
    return BwaHttpCookie(textBetween(text, begin, equals), textBetween(text, equals + 1, end));
}

} // namespace

BwaCgiEnvironment::BwaCgiEnvironment(BwaAbstractCgiInput* input)
    : m_input(input)
    , m_serverSoftware(input->getenv(QStringLiteral("SERVER_SOFTWARE")))
    , m_serverName(input->getenv(QStringLiteral("SERVER_NAME")))
    , m_gatewayInterface(input->getenv(QStringLiteral("GATEWAY_INTERFACE")))
    , m_serverProtocol(input->getenv(QStringLiteral("SERVER_PROTOCOL")))
    , m_serverPort(portNumber(input->getenv(QStringLiteral("SERVER_PORT"))))
    , m_requestMethod(input->getenv(QStringLiteral("REQUEST_METHOD")))
    , m_pathInfo(input->getenv(QStringLiteral("PATH_INFO")))
    , m_pathTranslated(input->getenv(QStringLiteral("PATH_TRANSLATED")))
    , m_scriptName(input->getenv(QStringLiteral("SCRIPT_NAME")))
    , m_queryString(input->getenv(QStringLiteral("QUERY_STRING")))
    , m_remoteHost(input->getenv(QStringLiteral("REMOTE_HOST")))
    , m_remoteAddr(input->getenv(QStringLiteral("REMOTE_ADDR")))
    , m_authType(input->getenv(QStringLiteral("AUTH_TYPE")))
    , m_remoteUser(input->getenv(QStringLiteral("REMOTE_USER")))
    , m_remoteIdent(input->getenv(QStringLiteral("REMOTE_IDENT")))
    , m_contentType(input->getenv(QStringLiteral("CONTENT_TYPE")))
    , m_contentLength(decimalNumber(input->getenv(QStringLiteral("CONTENT_LENGTH")), 4294967295U))
    , m_httpAccept(input->getenv(QStringLiteral("HTTP_ACCEPT")))
    , m_httpAcceptLanguage(input->getenv(QStringLiteral("HTTP_ACCEPT_LANGUAGE")))
    , m_httpUserAgent(input->getenv(QStringLiteral("HTTP_USER_AGENT")))
    , m_httpAuthorization(input->getenv(QStringLiteral("HTTP_AUTHORIZATION")))
    , m_httpCookie(input->getenv(QStringLiteral("HTTP_COOKIE")))
    , m_cookies(parseCookies(m_httpCookie))
    , m_https(input->getenv(QStringLiteral("HTTPS")) == QLatin1String("on"))
{
}

BwaCgiEnvironment::ServerProtocol BwaCgiEnvironment::parseServerProtocol(const QString& text)
{
    const BwaSize slash = text.indexOf(QLatin1Char('/'));
    if (slash < 0) {
        return {text, 0, 0};
    }
    ServerProtocol result = {text.left(slash), 0, 0};
    const BwaSize majorBegin = slash + 1;
    const BwaSize dot = skipDigits(text, majorBegin);
    const BwaSize minorBegin = dot + 1;
    const BwaSize end = skipDigits(text, minorBegin);
    const bool isVersion = dot > majorBegin && dot < text.size() &&
        text.at(dot) == QLatin1Char('.') && end > minorBegin && end == text.size();
    if (isVersion) {
        result.majorVersion = textBetween(text, majorBegin, dot).toUInt();
        result.minorVersion = textBetween(text, minorBegin, end).toUInt();
    }
    return result;
}

QList<BwaHttpCookie> BwaCgiEnvironment::parseCookies(const QString& text)
{
    QList<BwaHttpCookie> cookies;
    BwaSize begin = 0;
    while (begin < text.size()) {
        const BwaSize end = endOfCookie(text, begin);
        const BwaHttpCookie cookie = cookieBetween(text, begin, end);
        if (!cookie.name.isEmpty() || !cookie.value.isEmpty()) {
            cookies.append(cookie);
        }
        begin = end + 2;
    }
    return cookies;
}

BwaHttpCookie BwaCgiEnvironment::parseCookie(const QString& text)
{
    return cookieBetween(text, 0, text.size());
}

QPair<QString, QHash<QString, QString>> BwaCgiEnvironment::parseContentType(const QString& text)
{
    return BwaHeaderValueParser(text).takeElement();
}
