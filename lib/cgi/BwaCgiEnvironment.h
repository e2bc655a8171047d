// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWACGIENVIRONMENT_H
#define BWACGIENVIRONMENT_H

#include "http/BwaHttpCookie.h"

#include <QHash>
#include <QList>
#include <QPair>
#include <QString>

class BwaAbstractCgiInput;

/**
 * The CGI variables of one request (RFC 3875, section 4.1), read once and never changed.
 *
 * A variable that is not set gives an empty text, the number 0 or false.
 */
class BWA_EXPORT BwaCgiEnvironment
{
public:
    /** A protocol such as "HTTP/1.1". */
    struct ServerProtocol {
        QString protocol; /**< The text before the first "/", or the whole text. */
        unsigned int majorVersion =
            0; /**< 0 unless digits, a dot and digits follow the "/"; also when too large. */
        unsigned int minorVersion = 0; /**< As majorVersion. */
    };

    /** Reads all variables from @a input, which must outlive this. */
    explicit BwaCgiEnvironment(BwaAbstractCgiInput* input);

    /** Splits a SERVER_PROTOCOL such as "HTTP/1.1". */
    static ServerProtocol parseServerProtocol(const QString& text);
    /**
     * The cookies of a Cookie header in their order, without those that have neither name nor
     * value.
     *
     * Settled: only "; " separates cookies, so "a=1;b=2" is one. Nothing is trimmed or decoded.
     */
    static QList<BwaHttpCookie> parseCookies(const QString& text);
    /** Splits at the first "="; in a text that has none, the name is empty and all is the value. */
    static BwaHttpCookie parseCookie(const QString& text);
    /** The media type and its parameters; upper and lower case stay as they were sent. */
    static QPair<QString, QHash<QString, QString>> parseContentType(const QString& text);

    /** The input that the variables were read from; not owned. */
    BwaAbstractCgiInput* input() const { return m_input; }
    /** The CGI variable of the same name, as the web server sent it. @{ */
    QString serverSoftware() const { return m_serverSoftware; }
    QString serverName() const { return m_serverName; }
    QString gatewayInterface() const { return m_gatewayInterface; }
    QString serverProtocol() const { return m_serverProtocol; }
    QString requestMethod() const { return m_requestMethod; }
    QString pathTranslated() const { return m_pathTranslated; }
    QString remoteHost() const { return m_remoteHost; }
    QString remoteIdent() const { return m_remoteIdent; }
    QString contentType() const { return m_contentType; }
    QString httpAccept() const { return m_httpAccept; }
    QString httpAcceptLanguage() const { return m_httpAcceptLanguage; }
    QString httpUserAgent() const { return m_httpUserAgent; }
    QString httpCookie() const { return m_httpCookie; }
    /** @} */
    /** SERVER_PORT; 0 when the variable is no number from 0 to 65535. */
    unsigned short serverPort() const { return m_serverPort; }
    /** CONTENT_LENGTH in bytes; 0 when the variable is no number from 0 to 4294967295. */
    unsigned int contentLength() const { return m_contentLength; }
    /** SCRIPT_NAME: the part of the path that chooses the root service. */
    QString scriptName() const { return m_scriptName; }
    /** PATH_INFO: the path after the script name, decoded by the web server. */
    QString pathInfo() const { return m_pathInfo; }
    /** QUERY_STRING, still URL-encoded. */
    QString queryString() const { return m_queryString; }
    /** REMOTE_ADDR: the address of the client, as the web server knows it. */
    QString remoteAddr() const { return m_remoteAddr; }
    /** AUTH_TYPE, if the web server authenticates. */
    QString authType() const { return m_authType; }
    /** REMOTE_USER, if the web server authenticates. */
    QString remoteUser() const { return m_remoteUser; }
    /** The header Authorization, as sent; some web servers pass it on only when told to. */
    QString httpAuthorization() const { return m_httpAuthorization; }
    /** What parseCookies() makes of httpCookie(). */
    QList<BwaHttpCookie> cookies() const { return m_cookies; }
    /** Whether the variable HTTPS is exactly "on", in lower case. */
    bool https() const { return m_https; }

private:
    BwaAbstractCgiInput* m_input; // not owned
    // In the order in which the constructor reads the variables.
    QString m_serverSoftware;
    QString m_serverName;
    QString m_gatewayInterface;
    QString m_serverProtocol;
    unsigned short m_serverPort;
    QString m_requestMethod;
    QString m_pathInfo;
    QString m_pathTranslated;
    QString m_scriptName;
    QString m_queryString;
    QString m_remoteHost;
    QString m_remoteAddr;
    QString m_authType;
    QString m_remoteUser;
    QString m_remoteIdent;
    QString m_contentType;
    unsigned int m_contentLength;
    QString m_httpAccept;
    QString m_httpAcceptLanguage;
    QString m_httpUserAgent;
    QString m_httpAuthorization;
    QString m_httpCookie;
    QList<BwaHttpCookie> m_cookies;
    bool m_https;
};

#endif
