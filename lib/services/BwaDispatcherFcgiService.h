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
 * The rest of the path is what follows the path of this dispatcher and a "/". The request goes to
 * the child whose name is exactly that rest. When there is none, it goes to the first dispatcher
 * among the children, in the order of their names, whose name and a "/" begin the rest: so only a
 * dispatcher receives paths below its own, a "/" at the end included. When there is none either,
 * the request is answered with 404.
 */
class BWA_EXPORT BwaDispatcherFcgiService : public BwaAbstractFcgiService
{
    Q_OBJECT

public:
    /** A dispatcher without children. */
    explicit BwaDispatcherFcgiService(QObject* parent = nullptr);
    ~BwaDispatcherFcgiService() override;

    /**
     * A std::exception that leaves a child is logged and answered with 500, and the request is
     * deleted. When the child has deleted it already, the exception is only logged on Qt's debug
     * channel.
     */
    void processRequest(BwaFcgiRequest* request) override;
    /** Answers a request for the path of this dispatcher itself, here with 403. */
    virtual void processThisService(BwaFcgiRequest* request);

    /**
     * Adopts @a service, which leaves the dispatcher that has it. A child that has the name already
     * is deleted later, by the event loop; so is @a service if it is that child itself.
     *
     * Settled: a service that this dispatcher has already under another name loses both names. No
     * request reaches it then. To serve two names, add two services.
     */
    void addService(const QString& name, BwaAbstractFcgiService* service);
    /** Adds a new dispatcher, owned by this one. */
    BwaDispatcherFcgiService* addDispatcherService(const QString& name);
    /**
     * Releases a child to the caller, who then owns it; null when there is none.
     *
     * Settled: a child with an empty name is released whenever another child is, and nobody owns it
     * then.
     */
    BwaAbstractFcgiService* removeService(const QString& name);
    /** The first name of @a service in this dispatcher; null when it is no child. */
    QString childServiceName(const BwaAbstractFcgiService* service) const;

private Q_SLOTS:
    void serviceDestroyed(const QString& name);

private:
    BWA_HIDDEN void dispatch(BwaFcgiRequest* request);
    BWA_HIDDEN BwaAbstractFcgiService* childForPath(const QString& rest) const;
    BWA_HIDDEN void forgetName(const QString& name);

    QSignalMapper m_destroyedMapper; // calls serviceDestroyed() with the name of the child
    QMap<QString, BwaAbstractFcgiService*> m_children; // owned as QObject children
    QMultiHash<const BwaAbstractFcgiService*, QString>
        m_names; // the keys in m_children of each child
};

#endif
