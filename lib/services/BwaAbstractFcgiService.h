// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAABSTRACTFCGISERVICE_H
#define BWAABSTRACTFCGISERVICE_H

#include "BwaGlobal.h"

#include <QObject>
#include <QString>

class BwaDispatcherFcgiService;
class BwaFcgiRequest;

/** A node of the tree of services, which answer requests. */
class BWA_EXPORT BwaAbstractFcgiService : public QObject
{
    Q_OBJECT

public:
    /** A root service until a dispatcher adopts it. */
    explicit BwaAbstractFcgiService(QObject* parent = nullptr);
    ~BwaAbstractFcgiService() override;

    /** Takes @a request over: it is answered and deleted, now or later. */
    virtual void processRequest(BwaFcgiRequest* request) = 0;

    /**
     * The names of the services above this one and its own, each after a "/", as in "/api/users".
     * The script name is no part of it. Empty, not null, for a root service.
     */
    QString servicePath() const;
    /** The dispatcher that holds this service, or null. */
    BwaDispatcherFcgiService* parentService() const { return m_parentService; }
    /**
     * For dispatchers only, which call it when they adopt or release this service. The service
     * leaves its dispatcher; @a parent, which may be null, becomes its parent service and QObject
     * parent.
     */
    void setParentService(BwaDispatcherFcgiService* parent);

private:
    friend class BwaDispatcherFcgiService;

    BwaDispatcherFcgiService* m_parentService; // not owned
};

#endif
