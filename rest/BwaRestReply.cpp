// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestReply.h"

#include "json/BwaJson.h"
#include "rest/BwaRestLater.h"
#include "rest/BwaRestProblem.h"
#include "rest/BwaRestText_p.h"

namespace {

bool isReserved(const QByteArray& name)
{
    return name.compare("Status", Qt::CaseInsensitive) == 0 ||
        name.compare("Content-Length", Qt::CaseInsensitive) == 0;
}

// Whether @a text can be in a cookie without ending its attribute or the header line.
bool isCookieText(const QByteArray& text)
{
    for (const char byte : text) {
        if (static_cast<quint8>(byte) < 0x20 || byte == 0x7f || byte == ';') {
            return false;
        }
    }
    return true;
}

QByteArray attribute(const char* name, const QString& value)
{
    return value.isNull() ? QByteArray() : QByteArray("; ") + name + '=' + value.toUtf8();
}

QByteArray lifetime(const BwaHttpCookie& cookie)
{
    if (cookie.expired) {
        return "; Max-Age=0; Expires=Thu, 01 Jan 1970 00:00:00 GMT";
    }
    return cookie.maxAge > 0 ? "; Max-Age=" + QByteArray::number(cookie.maxAge) : QByteArray();
}

QByteArray attributes(const BwaHttpCookie& cookie, BwaRestReply::SameSite sameSite)
{
    const char* const sameSites[] = {"Strict", "Lax", "None"};
    const bool isSecure = cookie.secure || sameSite == BwaRestReply::None;
    return attribute("Domain", cookie.domain) + attribute("Path", cookie.path) +
        (isSecure ? "; Secure" : "") + (cookie.httpOnly ? "; HttpOnly" : "") +
        "; SameSite=" + sameSites[sameSite];
}

} // namespace

BwaRestReply::BwaRestReply(int status, const QByteArray& body, const QByteArray& contentType)
    : m_status(status)
    , m_contentType(contentType)
    , m_body(body)
{
    if (status < 200 || status > 599) {
        m_status = 500;
        m_complaints.append("A reply cannot have the status " + QByteArray::number(status));
    }
}

BwaRestReply::BwaRestReply(const QVariantMap& json, int status)
    : BwaRestReply(status, QByteArray(), "application/json")
{
    setJson(json);
}

BwaRestReply::BwaRestReply(const QVariantList& json, int status)
    : BwaRestReply(status, QByteArray(), "application/json")
{
    setJson(json);
}

BwaRestReply::BwaRestReply(const BwaRestProblem& problem)
    : BwaRestReply(problem.status(), QByteArray(), "application/problem+json")
{
    if (!problem.complaint().isNull()) {
        m_complaints.append(problem.complaint().toUtf8());
    }
    for (const auto& line : problem.headers()) {
        header(line.first, line.second);
    }
    setJson(problem.members());
}

BwaRestReply::BwaRestReply(const BwaRestLater& later)
    : BwaRestReply(202, QByteArray(), QByteArray())
{
    m_later = later.m_state;
}

BwaRestReply::~BwaRestReply() = default;

void BwaRestReply::setJson(const QVariant& value)
{
    bool ok = false;
    m_body = BwaJson::write(value, &ok);
    if (!ok) {
        *this = BwaRestProblem(500);
        m_complaints.append("The reply holds a value that is no JSON");
    }
}

BwaRestReply BwaRestReply::empty(int status)
{
    return BwaRestReply(status, QByteArray(), QByteArray());
}

BwaRestReply BwaRestReply::bytes(const QByteArray& body, const QByteArray& contentType, int status)
{
    const bool isValue = BwaRestText::isHeaderValue(contentType);
    BwaRestReply reply(status, body, isValue ? contentType : "application/octet-stream");
    if (!isValue) {
        reply.m_complaints.append("The reply leaves out its Content-Type");
    }
    return reply;
}

BwaRestReply BwaRestReply::created(const QString& path, const QVariantMap& json)
{
    BwaRestReply reply(json, 201);
    reply.m_createdPath = path;
    return reply;
}

BwaRestReply BwaRestReply::redirect(const QString& target, int status)
{
    return empty(status).header("Location", BwaRestText::encodedUrl(target));
}

BwaRestReply BwaRestReply::file(const QString& path, const QByteArray& contentType)
{
    BwaRestReply reply = bytes(QByteArray(), contentType);
    reply.m_filePath = path;
    return reply;
}

BwaRestReply& BwaRestReply::header(const QByteArray& name, const QByteArray& value)
{
    if (!BwaRestText::isToken(name) || isReserved(name) || !BwaRestText::isHeaderValue(value)) {
        m_complaints.append("The reply leaves out the header " + name.toPercentEncoding());
    } else if (name.compare("Content-Type", Qt::CaseInsensitive) == 0) {
        m_contentType = value;
    } else {
        addLine(name, value);
    }
    return *this;
}

void BwaRestReply::addLine(const QByteArray& name, const QByteArray& value)
{
    m_lines += name + ": " + value + '\n';
    m_headerNames.append(name);
}

BwaRestReply& BwaRestReply::cookie(const BwaHttpCookie& cookie, SameSite sameSite)
{
    const QByteArray name = cookie.name.toUtf8();
    const QByteArray texts = cookie.value.toUtf8() + cookie.domain.toUtf8() + cookie.path.toUtf8();
    if (!BwaRestText::isToken(name) || !isCookieText(texts)) {
        m_complaints.append("The reply leaves out the cookie " + name.toPercentEncoding());
        return *this;
    }
    m_lines += "Set-Cookie: " + name + '=' + cookie.value.toUtf8() + lifetime(cookie) +
        attributes(cookie, sameSite) + '\n';
    return *this;
}

BwaRestReply& BwaRestReply::etag(const QByteArray& tag)
{
    m_etag = BwaRestText::entityTag(tag);
    return *this;
}
