// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiEnvironment.h"

#include "cgi/BwaAbstractCgiInput.h"
#include "cgi/BwaHeaderValueParser_p.h"
#include "cgi/BwaTextScanning_p.h"

namespace {

/** The names of the variables; made once, for the whole process. */
struct VariableNames {
    const QString serverSoftware = QString::fromLatin1("SERVER_SOFTWARE");
    const QString serverName = QString::fromLatin1("SERVER_NAME");
    const QString gatewayInterface = QString::fromLatin1("GATEWAY_INTERFACE");
    const QString serverProtocol = QString::fromLatin1("SERVER_PROTOCOL");
    const QString serverPort = QString::fromLatin1("SERVER_PORT");
    const QString requestMethod = QString::fromLatin1("REQUEST_METHOD");
    const QString pathInfo = QString::fromLatin1("PATH_INFO");
    const QString pathTranslated = QString::fromLatin1("PATH_TRANSLATED");
    const QString scriptName = QString::fromLatin1("SCRIPT_NAME");
    const QString queryString = QString::fromLatin1("QUERY_STRING");
    const QString remoteHost = QString::fromLatin1("REMOTE_HOST");
    const QString remoteAddr = QString::fromLatin1("REMOTE_ADDR");
    const QString authType = QString::fromLatin1("AUTH_TYPE");
    const QString remoteUser = QString::fromLatin1("REMOTE_USER");
    const QString remoteIdent = QString::fromLatin1("REMOTE_IDENT");
    const QString contentType = QString::fromLatin1("CONTENT_TYPE");
    const QString contentLength = QString::fromLatin1("CONTENT_LENGTH");
    const QString httpAccept = QString::fromLatin1("HTTP_ACCEPT");
    const QString httpAcceptLanguage = QString::fromLatin1("HTTP_ACCEPT_LANGUAGE");
    const QString httpUserAgent = QString::fromLatin1("HTTP_USER_AGENT");
    const QString httpAuthorization = QString::fromLatin1("HTTP_AUTHORIZATION");
    const QString httpCookie = QString::fromLatin1("HTTP_COOKIE");
    const QString https = QString::fromLatin1("HTTPS");
};

const VariableNames& names()
{
    static const VariableNames names;
    return names;
}

// The number that @a text holds in base 10; 0 when it is none, is signed, or exceeds @a largest.
// As in Qt's conversion, there may be blanks around it.
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
    , m_serverSoftware(input->getenv(names().serverSoftware))
    , m_serverName(input->getenv(names().serverName))
    , m_gatewayInterface(input->getenv(names().gatewayInterface))
    , m_serverProtocol(input->getenv(names().serverProtocol))
    , m_serverPort(0)
    , m_contentLength(0)
    , m_https(false)
{
    const VariableNames& known = names();
    m_serverPort =
        static_cast<unsigned short>(decimalNumber(input->getenv(known.serverPort), 65535));
    m_requestMethod = input->getenv(known.requestMethod);
    m_pathInfo = input->getenv(known.pathInfo);
    m_pathTranslated = input->getenv(known.pathTranslated);
    m_scriptName = input->getenv(known.scriptName);
    m_queryString = input->getenv(known.queryString);
    m_remoteHost = input->getenv(known.remoteHost);
    m_remoteAddr = input->getenv(known.remoteAddr);
    m_authType = input->getenv(known.authType);
    m_remoteUser = input->getenv(known.remoteUser);
    m_remoteIdent = input->getenv(known.remoteIdent);
    m_contentType = input->getenv(known.contentType);
    m_contentLength = decimalNumber(input->getenv(known.contentLength), 4294967295U);
    m_httpAccept = input->getenv(known.httpAccept);
    m_httpAcceptLanguage = input->getenv(known.httpAcceptLanguage);
    m_httpUserAgent = input->getenv(known.httpUserAgent);
    m_httpAuthorization = input->getenv(known.httpAuthorization);
    m_httpCookie = input->getenv(known.httpCookie);
    m_https = input->getenv(known.https) == QLatin1String("on");
    m_cookies = parseCookies(m_httpCookie);
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
