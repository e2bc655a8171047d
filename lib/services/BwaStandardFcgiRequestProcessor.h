// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWASTANDARDFCGIREQUESTPROCESSOR_H
#define BWASTANDARDFCGIREQUESTPROCESSOR_H

#include "services/BwaAbstractFcgiRequestProcessor.h"

class BwaAbstractFcgiSessionIdentifier;
class BwaWebSession;

/**
 * A processor with one hook a request method, each of which answers 405 until it is overridden.
 *
 * A hook takes the request over and deletes it as its last act. A std::exception that leaves a hook
 * is logged and answered with 500, and the request is then deleted. When the hook has deleted it
 * already, the exception only goes to Qt's debug channel. What is thrown later, while a request
 * is answered that the hook has kept, is caught by nobody and ends the process: catch it there.
 */
class BWA_EXPORT BwaStandardFcgiRequestProcessor : public BwaAbstractFcgiRequestProcessor
{
public:
    /** @a sessionIdentifier must outlive this; it may be null if nothing is authenticated. */
    explicit BwaStandardFcgiRequestProcessor(BwaAbstractFcgiSessionIdentifier* sessionIdentifier);
    ~BwaStandardFcgiRequestProcessor() override;

    void processRequest(BwaFcgiRequest* request) override;

    /** What authenticateRequest() asks; not owned, may be null. */
    BwaAbstractFcgiSessionIdentifier* sessionIdentifier() const { return m_sessionIdentifier; }

protected:
    /** A "GET" request. */
    virtual void processGetMethod(BwaFcgiRequest* request);
    /** A "POST" request. */
    virtual void processPostMethod(BwaFcgiRequest* request);
    /** A "PUT" request. */
    virtual void processPutMethod(BwaFcgiRequest* request);
    /** A "DELETE" request. */
    virtual void processDeleteMethod(BwaFcgiRequest* request);
    /** Any other method, "HEAD" and "get" included. */
    virtual void processOtherMethod(BwaFcgiRequest* request, const QString& method);

    /**
     * The session of the request. Without one, or when its token has expired and @a
     * acceptExpiredToken is false, the refusal is logged and sent, and the result is null; the
     * request is still the caller's to delete.
     */
    BwaWebSession* authenticateRequest(BwaFcgiRequest* request, bool acceptExpiredToken = false);
    /** Answers 405 and deletes the request. */
    void processNotAllowedMethod(BwaFcgiRequest* request);

private:
    void callMethodHook(BwaFcgiRequest* request);

    BwaAbstractFcgiSessionIdentifier* m_sessionIdentifier; // not owned
};

#endif
