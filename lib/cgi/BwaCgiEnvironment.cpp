// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiEnvironment.h"

#include "cgi/BwaAbstractCgiInput.h"
#include "cgi/BwaCgiRequest.h"
#include "cgi/BwaTextScanning_p.h"

namespace {

QString variable(BwaAbstractCgiInput* input, const char* name)
{
    return input->getenv(QString::fromLatin1(name));
}

// Qt's conversion accepts a leading plus, which no length or port may have.
bool isSigned(const QString& number)
{
    return number.contains(QLatin1Char('+'));
}

int skipDigits(const QString& text, int position)
{
    while (position < text.size() && text.at(position).isDigit()) {
        ++position;
    }
    return position;
}

} // namespace

BwaCgiEnvironment::BwaCgiEnvironment(BwaAbstractCgiInput* input)
    : m_input(input)
    , m_serverSoftware(variable(input, "SERVER_SOFTWARE"))
    , m_serverName(variable(input, "SERVER_NAME"))
    , m_gatewayInterface(variable(input, "GATEWAY_INTERFACE"))
    , m_serverProtocol(variable(input, "SERVER_PROTOCOL"))
    , m_serverPort(0)
    , m_contentLength(0)
    , m_https(false)
{
    const QString serverPort = variable(input, "SERVER_PORT");
    m_serverPort = isSigned(serverPort) ? 0 : serverPort.toUShort();
    m_requestMethod = variable(input, "REQUEST_METHOD");
    m_pathInfo = variable(input, "PATH_INFO");
    m_pathTranslated = variable(input, "PATH_TRANSLATED");
    m_scriptName = variable(input, "SCRIPT_NAME");
    m_queryString = variable(input, "QUERY_STRING");
    m_remoteHost = variable(input, "REMOTE_HOST");
    m_remoteAddr = variable(input, "REMOTE_ADDR");
    m_authType = variable(input, "AUTH_TYPE");
    m_remoteUser = variable(input, "REMOTE_USER");
    m_remoteIdent = variable(input, "REMOTE_IDENT");
    m_contentType = variable(input, "CONTENT_TYPE");
    const QString contentLength = variable(input, "CONTENT_LENGTH");
    m_contentLength = isSigned(contentLength) ? 0 : contentLength.toUInt();
    m_httpAccept = variable(input, "HTTP_ACCEPT");
    m_httpAcceptLanguage = variable(input, "HTTP_ACCEPT_LANGUAGE");
    m_httpUserAgent = variable(input, "HTTP_USER_AGENT");
    m_httpAuthorization = variable(input, "HTTP_AUTHORIZATION");
    m_httpCookie = variable(input, "HTTP_COOKIE");
    m_https = variable(input, "HTTPS") == QLatin1String("on");
    m_cookies = parseCookies(m_httpCookie);
}

BwaCgiEnvironment::ServerProtocol BwaCgiEnvironment::parseServerProtocol(const QString& text)
{
    const int slash = text.indexOf(QLatin1Char('/'));
    if (slash < 0) {
        return {text, 0, 0};
    }
    ServerProtocol result = {text.left(slash), 0, 0};
    const int majorBegin = slash + 1;
    const int dot = skipDigits(text, majorBegin);
    const int minorBegin = dot + 1;
    const int end = skipDigits(text, minorBegin);
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
    const QLatin1String separator("; ");
    QList<BwaHttpCookie> cookies;
    int begin = 0;
    while (begin >= 0 && !text.isEmpty()) {
        const int end = text.indexOf(separator, begin);
        const BwaHttpCookie cookie =
            parseCookie(textBetween(text, begin, end < 0 ? text.size() : end));
        if (!cookie.name.isEmpty() || !cookie.value.isEmpty()) {
            cookies.append(cookie);
        }
        begin = end < 0 ? -1 : end + separator.size();
    }
    return cookies;
}

BwaHttpCookie BwaCgiEnvironment::parseCookie(const QString& text)
{
    const int equals = text.indexOf(QLatin1Char('='));
    if (equals < 0) {
        return BwaHttpCookie(QString::fromLatin1(""), text);
    }
    return BwaHttpCookie(text.left(equals), textBetween(text, equals + 1, text.size()));
}

QPair<QString, QHash<QString, QString>> BwaCgiEnvironment::parseContentType(const QString& text)
{
    return BwaCgiRequest::parseGenericHeader(text).first();
}
