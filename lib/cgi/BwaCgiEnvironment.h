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
        QString protocol;              /**< The text before the first "/", or the whole text. */
        unsigned int majorVersion = 0; /**< 0 unless digits, a dot and digits follow the "/". */
        unsigned int minorVersion = 0; /**< As majorVersion. */
    };

    /** Reads all variables from @a input, which must outlive this. */
    explicit BwaCgiEnvironment(BwaAbstractCgiInput* input);

    static ServerProtocol parseServerProtocol(const QString& text);
    /**
     * The cookies of a Cookie header in their order; one without name and value is dropped.
     *
     * Settled: only "; " separates, so "a=1;b=2" is one cookie. Nothing is trimmed or decoded.
     */
    static QList<BwaHttpCookie> parseCookies(const QString& text);
    /** Splits at the first "="; without one, the name is empty and the value is the whole text. */
    static BwaHttpCookie parseCookie(const QString& text);
    /** The media type and its parameters, in the case in which they are written. */
    static QPair<QString, QHash<QString, QString>> parseContentType(const QString& text);

    BwaAbstractCgiInput* input() const { return m_input; }
    QString serverSoftware() const { return m_serverSoftware; }
    QString serverName() const { return m_serverName; }
    QString gatewayInterface() const { return m_gatewayInterface; }
    /** As sent, for example "HTTP/1.1". */
    QString serverProtocol() const { return m_serverProtocol; }
    /** 0 when the variable is no number from 0 to 65535. */
    unsigned short serverPort() const { return m_serverPort; }
    QString requestMethod() const { return m_requestMethod; }
    QString pathInfo() const { return m_pathInfo; }
    QString pathTranslated() const { return m_pathTranslated; }
    QString scriptName() const { return m_scriptName; }
    /** Still URL-encoded. */
    QString queryString() const { return m_queryString; }
    QString remoteHost() const { return m_remoteHost; }
    QString remoteAddr() const { return m_remoteAddr; }
    QString authType() const { return m_authType; }
    QString remoteUser() const { return m_remoteUser; }
    QString remoteIdent() const { return m_remoteIdent; }
    /** As sent, with its parameters. */
    QString contentType() const { return m_contentType; }
    /** In bytes; 0 when the variable is no number from 0 to 4294967295. */
    unsigned int contentLength() const { return m_contentLength; }
    QString httpAccept() const { return m_httpAccept; }
    QString httpAcceptLanguage() const { return m_httpAcceptLanguage; }
    QString httpUserAgent() const { return m_httpUserAgent; }
    QString httpAuthorization() const { return m_httpAuthorization; }
    /** As sent. */
    QString httpCookie() const { return m_httpCookie; }
    QList<BwaHttpCookie> cookies() const { return m_cookies; }
    /** The variable is exactly "on". */
    bool https() const { return m_https; }

private:
    BwaAbstractCgiInput* m_input; // not owned
    // Read in this order.
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
