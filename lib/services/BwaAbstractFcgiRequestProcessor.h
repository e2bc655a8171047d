// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAABSTRACTFCGIREQUESTPROCESSOR_H
#define BWAABSTRACTFCGIREQUESTPROCESSOR_H

#include "cgi/BwaCgiEnvironment.h"

#include <QHash>
#include <QPair>
#include <QString>
#include <QVariant>

class BwaFcgiRequest;

/** Answers the requests that reach a service. */
class BWA_EXPORT BwaAbstractFcgiRequestProcessor
{
public:
    virtual ~BwaAbstractFcgiRequestProcessor();

    /** Answers @a request and deletes it, now or later. */
    virtual void processRequest(BwaFcgiRequest* request) = 0;

    /** The protocol that SERVER_PROTOCOL names. */
    static BwaCgiEnvironment::ServerProtocol parseServerProtocol(BwaFcgiRequest* request);
    /** The media type and the parameters of CONTENT_TYPE. */
    static QPair<QString, QHash<QString, QString>> parseContentType(BwaFcgiRequest* request);
    /**
     * Reads and parses a JSON body: an object becomes a QVariantMap, an array a QVariantList.
     *
     * A media type other than "application/json", or a charset other than "utf-8", is answered
     * with 415, a body that ends early with 400; both are logged. A text that is no JSON is neither
     * answered nor logged: the caller does that. The request stays the caller's in every case.
     *
     * A text is refused whole, like one that is no JSON, when it holds an integer of more than 64
     * bits, a number such as 1e400, half a surrogate pair or more than 1024 containers within each
     * other, or begins with a byte order mark: see BwaJson::parse().
     *
     * @a ok, which may be null, becomes false when there is no value; the result is then invalid.
     */
    static QVariant parseJsonContent(BwaFcgiRequest* request, bool* ok = nullptr);

protected:
    /** Writes @a message on the request's err(), behind the place and the request's name. */
    static void logError(BwaFcgiRequest* request, const QString& message);
};

#endif
