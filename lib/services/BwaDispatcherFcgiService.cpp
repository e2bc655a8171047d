// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "services/BwaDispatcherFcgiService.h"

#include "BwaQtVersion_p.h"
#include "BwaStringStreaming.h"
#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiGuard_p.h"
#include "fcgi/BwaFcgiRequest.h"

#include <exception>

BwaDispatcherFcgiService::BwaDispatcherFcgiService(QObject* parent)
    : BwaAbstractFcgiService(parent)
{
    connect(&m_destroyedMapper, BWA_SIGNAL_MAPPED_TEXT, this, SLOT(serviceDestroyed(QString)));
}

// ~QObject() destroys the children when m_names no longer exists. So no child may ask this object
// for its name any more, as servicePath() does. Both lists are needed: a child that has lost its
// names is only in children(), and one to which the application has given another QObject parent is
// only in m_children.
BwaDispatcherFcgiService::~BwaDispatcherFcgiService()
{
    for (auto child = m_children.constBegin(); child != m_children.constEnd(); ++child) {
        child.value()->m_parentService = nullptr;
    }
    for (QObject* const child : children()) {
        if (auto* const service = qobject_cast<BwaAbstractFcgiService*>(child)) {
            service->m_parentService = nullptr;
        }
    }
}

void BwaDispatcherFcgiService::processRequest(BwaFcgiRequest* request)
{
    const auto answerException = [this, request](const std::exception& exception) {
        const BwaCgiEnvironment& environment = request->cgiRequest()->environment();
        request->err() << QString::fromLatin1("Error in dispatcher service \"%1\" for script "
                                              "\"%2\" while handling request with path info "
                                              "\"%3\": %4")
                              .arg(servicePath(), environment.scriptName(), environment.pathInfo(),
                                   QString::fromLatin1(exception.what()));
        request->sendHttpError(BwaFcgiRequest::InternalServerError);
        delete request;
    };
    BwaFcgiRequest::Guard::run(
        request, [this, request] { dispatch(request); }, answerException);
}

void BwaDispatcherFcgiService::dispatch(BwaFcgiRequest* request)
{
    const BwaCgiEnvironment& environment = request->cgiRequest()->environment();
    const QString path = servicePath();
    const QString pathInfo = environment.pathInfo();
    const QString childrenPath = path + QLatin1Char('/');
    if (pathInfo == path || pathInfo == childrenPath) {
        processThisService(request);
        return;
    }
    BwaAbstractFcgiService* const child = pathInfo.startsWith(childrenPath)
        ? childForPath(pathInfo.mid(childrenPath.size()))
        : nullptr;
    if (child) {
        child->processRequest(request);
        return;
    }
    request->err() << QString::fromLatin1("Error in dispatcher service \"%1\" for script \"%2\": "
                                          "Cannot find a child service to handle a request with "
                                          "path info \"%3\"")
                          .arg(path, environment.scriptName(), pathInfo);
    request->sendHttpError(BwaFcgiRequest::NotFound);
    delete request;
}

// For the rest "a/b/c" this looks up "a/b/c", then "a", then "a/b". Among names that begin the same
// text, the shorter one comes first in the map, so this finds the same child as a walk over all
// children in their order.
BwaAbstractFcgiService* BwaDispatcherFcgiService::childForPath(const QString& rest) const
{
    if (BwaAbstractFcgiService* const child = m_children.value(rest)) {
        return child;
    }
    for (BwaSize slash = rest.indexOf(QLatin1Char('/')); slash >= 0;
         slash = rest.indexOf(QLatin1Char('/'), slash + 1)) {
        const QString name = QString::fromRawData(rest.constData(), slash);
        BwaAbstractFcgiService* const child = m_children.value(name);
        if (qobject_cast<BwaDispatcherFcgiService*>(child)) {
            return child;
        }
    }
    return nullptr;
}

void BwaDispatcherFcgiService::processThisService(BwaFcgiRequest* request)
{
    request->sendHttpError(BwaFcgiRequest::Forbidden);
    delete request;
}

void BwaDispatcherFcgiService::addService(const QString& name, BwaAbstractFcgiService* service)
{
    if (BwaAbstractFcgiService* const replaced = removeService(name)) {
        replaced->deleteLater();
    }
    m_children.insert(name, service);
    m_names.insert(service, name);
    // This comes before setMapping(), which connects destroyed() to a slot that removes the
    // mapping: slots are called in the order of their connection, and map() needs the mapping.
    connect(service, SIGNAL(destroyed()), &m_destroyedMapper, SLOT(map()));
    m_destroyedMapper.setMapping(service, name);
    service->setParentService(this);
}

BwaDispatcherFcgiService* BwaDispatcherFcgiService::addDispatcherService(const QString& name)
{
    auto* const service = new BwaDispatcherFcgiService(this);
    addService(name, service);
    return service;
}

BwaAbstractFcgiService* BwaDispatcherFcgiService::removeService(const QString& name)
{
    BwaAbstractFcgiService* const service = m_children.value(name);
    if (!service) {
        return nullptr;
    }
    forgetName(name);
    service->setParentService(nullptr);
    // This also disconnects the slot that setMapping() has connected. Otherwise it would be called
    // before map() when the service has been added again.
    disconnect(service, SIGNAL(destroyed()), &m_destroyedMapper, nullptr);
    m_destroyedMapper.removeMappings(service);
    return service;
}

QString BwaDispatcherFcgiService::childServiceName(const BwaAbstractFcgiService* service) const
{
    const QString* first = nullptr;
    for (auto name = m_names.constFind(service);
         name != m_names.constEnd() && name.key() == service; ++name) {
        if (!first || name.value() < *first) {
            first = &name.value();
        }
    }
    return first ? *first : QString();
}

void BwaDispatcherFcgiService::serviceDestroyed(const QString& name)
{
    forgetName(name);
}

void BwaDispatcherFcgiService::forgetName(const QString& name)
{
    m_names.remove(m_children.take(name), name);
}
