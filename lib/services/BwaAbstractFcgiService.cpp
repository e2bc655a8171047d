// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "services/BwaAbstractFcgiService.h"

#include "services/BwaDispatcherFcgiService.h"

BwaAbstractFcgiService::BwaAbstractFcgiService(QObject* parent)
    : QObject(parent)
    , m_parentService(nullptr)
{
}

BwaAbstractFcgiService::~BwaAbstractFcgiService() = default;

QString BwaAbstractFcgiService::servicePath() const
{
    QString path = QString::fromLatin1("");
    const BwaAbstractFcgiService* service = this;
    while (const BwaDispatcherFcgiService* const parent = service->m_parentService) {
        path.prepend(QLatin1Char('/') + parent->childServiceName(service));
        service = parent;
    }
    return path;
}

void BwaAbstractFcgiService::setParentService(BwaDispatcherFcgiService* parent)
{
    if (m_parentService) {
        // removeService() calls this function again, with null. That call asks for the name once
        // more, gets none, and so does not release this service twice.
        m_parentService->removeService(m_parentService->childServiceName(this));
    }
    m_parentService = parent;
    setParent(parent);
}
