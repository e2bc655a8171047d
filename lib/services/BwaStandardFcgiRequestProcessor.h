// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWASTANDARDFCGIREQUESTPROCESSOR_H
#define BWASTANDARDFCGIREQUESTPROCESSOR_H

#include "services/BwaAbstractFcgiRequestProcessor.h"

class BwaAbstractFcgiSessionIdentifier;
class BwaWebSession;

/**
 * A processor with a hook for each request method. A hook answers 405 until it is overridden.
 *
 *     struct Greeting : BwaStandardFcgiRequestProcessor {
 *         using BwaStandardFcgiRequestProcessor::BwaStandardFcgiRequestProcessor;
 *         void processGetMethod(BwaFcgiRequest* request) override
 *         {
 *             request->out() << BwaHttpPlainTextHeader() << "Hello";
 *             delete request;
 *         }
 *     };
 *
 * A hook takes the request over and deletes it as its last act. A std::exception that leaves a hook
 * is logged and answered with 500, and the request is deleted. When the hook has deleted it
 * already, the exception is only logged on Qt's debug channel. A hook may also keep the request and
 * have it answered later: the code that does so must catch its own exceptions, which otherwise end
 * the process.
 */
class BWA_EXPORT BwaStandardFcgiRequestProcessor : public BwaAbstractFcgiRequestProcessor
{
public:
    /** @a sessionIdentifier must outlive this; it may be null if nothing is authenticated. */
    explicit BwaStandardFcgiRequestProcessor(BwaAbstractFcgiSessionIdentifier* sessionIdentifier);
    ~BwaStandardFcgiRequestProcessor() override;

    void processRequest(BwaFcgiRequest* request) override;

    /** Finds the sessions for authenticateRequest(); not owned, may be null. */
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
     * The session of the request. When there is none, or when its token has expired and
     * @a acceptExpiredToken is false, this logs that, sends the identifier's refusal and returns
     * null. The caller deletes the request in either case. Needs a session identifier.
     */
    BwaWebSession* authenticateRequest(BwaFcgiRequest* request, bool acceptExpiredToken = false);
    /** Answers 405 and deletes the request. */
    void processNotAllowedMethod(BwaFcgiRequest* request);

private:
    BWA_HIDDEN void callMethodHook(BwaFcgiRequest* request);

    BwaAbstractFcgiSessionIdentifier* m_sessionIdentifier; // not owned
};

#endif
