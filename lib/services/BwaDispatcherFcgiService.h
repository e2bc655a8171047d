// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWADISPATCHERFCGISERVICE_H
#define BWADISPATCHERFCGISERVICE_H

#include "services/BwaAbstractFcgiService.h"

#include <QHash>
#include <QMap>
#include <QSignalMapper>
#include <QString>

/**
 * An inner node of the service tree: hands a request to the child that its path info names.
 *
 * A child registered under exactly the rest of the path is taken first. Otherwise the first
 * dispatcher, in the order of the names, whose name and a "/" begin the rest. Only dispatchers
 * answer paths below or a "/" behind their own; whatever has no child is answered with 404.
 */
class BWA_EXPORT BwaDispatcherFcgiService : public BwaAbstractFcgiService
{
    Q_OBJECT

public:
    /** A dispatcher without children. */
    explicit BwaDispatcherFcgiService(QObject* parent = nullptr);
    ~BwaDispatcherFcgiService() override;

    /**
     * A std::exception from below is logged and answered with 500; the request is then deleted.
     * When it has been deleted already, the exception only goes to Qt's debug channel.
     */
    void processRequest(BwaFcgiRequest* request) override;
    /** Answers a request to this node itself; here with 403. */
    virtual void processThisService(BwaFcgiRequest* request);

    /**
     * Adopts @a service, which leaves the dispatcher that held it. A child that had the name is
     * deleted later, by the event loop; so is @a service if it was that child itself.
     */
    void addService(const QString& name, BwaAbstractFcgiService* service);
    /** Adds a new dispatcher, owned by this one. */
    BwaDispatcherFcgiService* addDispatcherService(const QString& name);
    /** Releases a child to the caller, who then owns it; null when there is none. */
    BwaAbstractFcgiService* removeService(const QString& name);
    /** The first name of @a service here; null when it is no child. */
    QString childServiceName(const BwaAbstractFcgiService* service) const;

private Q_SLOTS:
    void serviceDestroyed(const QString& name);

private:
    void dispatch(BwaFcgiRequest* request);
    BwaAbstractFcgiService* childForPath(const QString& rest) const;
    void forgetName(const QString& name);

    QSignalMapper m_destroyedMapper;                   // from a child that is destroyed to its name
    QMap<QString, BwaAbstractFcgiService*> m_children; // owned as QObject children
    QMultiHash<const BwaAbstractFcgiService*, QString> m_names; // m_children the other way round
    QHash<QString, BwaAbstractFcgiService*> m_exactChildren;    // m_children in no order
};

#endif
