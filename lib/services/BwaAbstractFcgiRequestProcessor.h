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

    /** The protocol in the variable SERVER_PROTOCOL. */
    static BwaCgiEnvironment::ServerProtocol parseServerProtocol(BwaFcgiRequest* request);
    /** The media type and the parameters of CONTENT_TYPE. */
    static QPair<QString, QHash<QString, QString>> parseContentType(BwaFcgiRequest* request);
    /**
     * Reads and parses a JSON body: an object becomes a QVariantMap, an array a QVariantList.
     *
     * This function answers and logs two failures: a media type other than "application/json" or a
     * charset other than "utf-8" with 415, a body for which processBodyContent() returns false,
     * also for being beyond a limit, with 400. When the text is not what BwaJson::parse() accepts,
     * the caller answers. The caller deletes the request in every case.
     *
     * @a ok, which may be null, becomes false when there is no value; the result is then invalid.
     */
    static QVariant parseJsonContent(BwaFcgiRequest* request, bool* ok = nullptr);

protected:
    /** Writes @a message on the request's err(), after the script name and the path info. */
    static void logError(BwaFcgiRequest* request, const QString& message);
};

#endif
