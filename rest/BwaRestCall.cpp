// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestCall.h"

#include "cgi/BwaCgiEnvironment.h"
#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "json/BwaJson.h"
#include "rest/BwaRestExchange_p.h"
#include "rest/BwaRestGroup.h"
#include "rest/BwaRestHeldCalls_p.h"
#include "rest/BwaRestOutcome_p.h"
#include "rest/BwaRestPool_p.h"
#include "rest/BwaRestProblem.h"
#include "rest/BwaRestReception_p.h"
#include "rest/BwaRestText_p.h"

#include <stdexcept>

namespace {

[[noreturn]] void refuseName(const BwaRestExchange& exchange, const char* name, const char* what)
{
    throw std::logic_error("The pattern \"" + exchange.entry->route->pattern().toStdString() +
                           "\" has no " + what + " \"" + name + '"');
}

// A linear search, because a pattern has few parameters.
std::size_t indexOf(const BwaRestExchange& exchange, const char* name)
{
    const std::vector<BwaRestSegment>& parameters = exchange.entry->parameters;
    for (std::size_t index = 0; index < parameters.size(); ++index) {
        if (parameters[index].name == name) {
            return index;
        }
    }
    refuseName(exchange, name, "parameter");
}

QStringView textAt(const BwaRestExchange& exchange, std::size_t index)
{
    const BwaRestRouter::Span span = exchange.spans.at(static_cast<int>(index));
    return {exchange.path.constData() + span.begin, span.size};
}

QStringView textOf(const BwaRestExchange& exchange, const char* name, BwaRestKind kind,
                   const char* what)
{
    const std::size_t index = indexOf(exchange, name);
    if (exchange.entry->parameters[index].kind != kind) {
        refuseName(exchange, name, what);
    }
    return textAt(exchange, index);
}

bool isJson(const QString& mediaType)
{
    return mediaType == QLatin1String("application/json") ||
        (mediaType.startsWith(QLatin1String("application/")) &&
         mediaType.endsWith(QLatin1String("+json")));
}

void checkIsJson(const QByteArray& contentType)
{
    const auto parsed = BwaCgiEnvironment::parseContentType(QString::fromLatin1(contentType));
    const QString charset = parsed.second.value(QString::fromLatin1("charset")).toLower();
    if (!isJson(parsed.first.toLower()) ||
        (!charset.isEmpty() && charset != QLatin1String("utf-8"))) {
        throw BwaRestProblem(415,
                             QString::fromLatin1("The body is to be application/json in UTF-8"));
    }
}

} // namespace

BwaRestCall::BwaRestCall(BwaRestExchange& exchange)
    : m_exchange(exchange)
{
}

QByteArray BwaRestCall::method() const
{
    return m_exchange.method;
}

QString BwaRestCall::path() const
{
    return m_exchange.path;
}

QString BwaRestCall::text(const char* name) const
{
    return textAt(m_exchange, indexOf(m_exchange, name)).toString();
}

qint64 BwaRestCall::number(const char* name) const
{
    return *BwaRestPattern::number(textOf(m_exchange, name, BwaRestKind::Number, "number"));
}

QUuid BwaRestCall::uuid(const char* name) const
{
    return QUuid(textOf(m_exchange, name, BwaRestKind::Uuid, "UUID").toString());
}

QStringList BwaRestCall::query(const char* name) const
{
    const QString wanted = QString::fromUtf8(name);
    QStringList values;
    for (const auto& pair : queryPairs()) {
        if (pair.first == wanted) {
            values.append(pair.second);
        }
    }
    return values;
}

const QList<QPair<QString, QString>>& BwaRestCall::queryPairs() const
{
    return m_exchange.queryPairs();
}

QByteArray BwaRestCall::header(const char* name) const
{
    return m_exchange.header(name);
}

QByteArray BwaRestCall::body() const
{
    return m_exchange.body();
}

QVariant BwaRestCall::json() const
{
    return json(nullptr);
}

QVariant BwaRestCall::json(QStringList* repeated) const
{
    m_exchange.checkBodySize(m_exchange.bodyLimit());
    checkIsJson(m_exchange.header("Content-Type"));
    bool ok = false;
    QVariant value = BwaJson::parse(body(), &ok, repeated);
    if (!ok) {
        throw BwaRestProblem(400, QString::fromLatin1("The body is no JSON"));
    }
    return value;
}

QList<QPair<QString, QString>> BwaRestCall::formPairs() const
{
    const QString contentType = QString::fromLatin1(m_exchange.header("Content-Type"));
    const QString mediaType = BwaCgiEnvironment::parseContentType(contentType).first.toLower();
    m_exchange.checkBodySize(m_exchange.bodyLimit());
    if (mediaType != QLatin1String("application/x-www-form-urlencoded")) {
        BwaRestOutcome::refuse(415, "The body is to be application/x-www-form-urlencoded");
    }
    return BwaRestText::urlEncodedPairs(QString::fromLatin1(body()));
}

const BwaCgiEnvironment& BwaRestCall::environment() const
{
    return m_exchange.request().cgiRequest()->environment();
}

void BwaRestCall::requireMatch(const QByteArray& tag) const
{
    const QByteArray list = header("If-Match");
    if (list.isNull()) {
        throw BwaRestProblem(428, QString::fromLatin1("The request needs an If-Match header"));
    }
    if (!BwaRestText::listHasEntityTag(list, BwaRestText::entityTag(tag))) {
        throw BwaRestProblem(412, QString::fromLatin1("It has been changed meanwhile"));
    }
}

const BwaRestSession* BwaRestCall::session() const
{
    return m_exchange.session.get();
}

BwaRestLater BwaRestCall::later(int deadline) const
{
    return BwaRestLater(m_exchange.settings().calls->stateFor(m_exchange, deadline));
}

BwaRestReply BwaRestCall::onPool(const std::function<BwaRestReply(const BwaRestCancel&)>& work,
                                 int deadline) const
{
    return onPoolThen(
        work, [](const BwaRestReply& reply) { return reply; }, deadline);
}

BwaRestReply BwaRestCall::upload(const BwaRestUpload& sink, int deadline) const
{
    BwaRestReply reply = later(deadline);
    const auto reception = std::make_shared<BwaRestReception>(sink, m_exchange, reply.m_later);
    reply.m_whenHeld = [reception](BwaRestExchange&, const BwaRestReply&) {
        BwaRestReception::begin(reception);
    };
    return reply;
}

BwaRestReply BwaRestCall::start(const std::function<Finisher(const BwaRestCancel&)>& work,
                                int deadline) const
{
    const BwaRestLater handle = later(deadline);
    m_exchange.settings().pool->start([state = handle.m_state, work] {
        Finisher finisher;
        BwaRestReply failed = BwaRestOutcome::of([&] {
            finisher = work(state->cancel());
            return BwaRestReply::empty();
        });
        state->replyWith(
            state, finisher ? finisher : [failed] { return failed; });
    });
    return handle;
}
