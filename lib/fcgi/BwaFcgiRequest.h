// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAFCGIREQUEST_H
#define BWAFCGIREQUEST_H

#include "cgi/BwaAbstractCgiInput.h"
#include "http/BwaHttpCookie.h"

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QSharedPointer>
#include <QString>
#include <QVarLengthArray>

#include <fcgio.h>

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>

class BwaCgiRequest;
class BwaFcgiConnections;
class BwaFcgiExchange;
class BwaFcgiReplyBuffer;

/**
 * One FastCGI request: what was asked, the stream of the reply, and the stream of error messages
 * that the web server writes to its log.
 *
 * Whoever receives a request owns it and deletes it exactly once, as the last act: deleting it
 * completes the reply. It lives in the listener's thread, and must not outlive it.
 */
class BWA_EXPORT BwaFcgiRequest
{
    Q_DISABLE_COPY(BwaFcgiRequest)

public:
    class BwaFcgiInput;

    /** The errors that have a standard reply; each value is the status code. */
    enum StandardHttpError : int {
        BadRequest = 400,
        Unauthorized = 401,
        PaymentRequired = 402,
        Forbidden = 403,
        NotFound = 404,
        MethodNotAllowed = 405,
        NotAcceptable = 406,
        ProxyAuthenticationRequired = 407,
        RequestTimeout = 408,
        Conflict = 409,
        Gone = 410,
        LengthRequired = 411,
        PreconditionFailed = 412,
        PayloadTooLarge = 413,
        UriTooLong = 414,
        UnsupportedMediaType = 415,
        RequestedRangeNotSatisfiable = 416,
        ExpectationFailed = 417,
        ImATeapot = 418,
        MisdirectedRequest = 421,
        UnprocessableEntity = 422,
        Locked = 423,
        MethodFailure = 424,
        UpgradeRequired = 426,
        PreconditionRequired = 428,
        TooManyRequests = 429,
        RequestHeaderFieldsTooLarge = 431,
        UnavailableForLegalReasons = 451,
        InternalServerError = 500,
        NotImplemented = 501,
        BadGateway = 502,
        ServiceUnavailable = 503,
        GatewayTimeout = 504,
        HttpVersionNotSupported = 505,
        VariantAlsoNegotiates = 506,
        InsufficientStorage = 507,
        LoopDetected = 508,
        NotExtended = 510,
        NetworkAuthenticationRequired = 511
    };

    /**
     * Takes over @a request, which must come from plain new and have been accepted. When this
     * throws, the caller still owns it.
     */
    explicit BwaFcgiRequest(FCGX_Request* request);
    /** Completes the reply. The connection is kept if the web server wants that, else closed. */
    ~BwaFcgiRequest();

    /** The status code and reason phrase of @a error; those of 500 for a value that is no member.
     */
    static QPair<unsigned short, QString> standardHttpErrorParameters(StandardHttpError error);
    /** Replies with the page of @a error. The caller still owns the request. */
    void sendHttpError(StandardHttpError error);
    /**
     * Replies with a status and a small page that shows it. The caller still owns the request.
     * @a reasonPhrase is not escaped. A std::exception is caught and logged on err().
     */
    void sendHttpError(unsigned short statusCode, const QString& reasonPhrase);
    /**
     * Replies with a header that makes the web server send the file at @a filePath (X-Sendfile).
     * The library does not check whether it exists. The caller still owns the request. A
     * std::exception is logged on err() and answered with 500.
     */
    void sendStaticFile(const QString& filePath, const QString& contentType,
                        const QList<BwaHttpCookie>& cookies);

    /** The script name and, right after it, the path info. */
    QString fullPath() const;

    /**
     * The bytes of the body that have arrived and have not been read, @a most at most: for reading
     * a body piece by piece while other requests are served. Empty when nothing has arrived yet and
     * when bodyIsOver(). Unlike BwaCgiRequest::readFromBody() it does not wait when the request
     * comes from a BwaFcgiListener. No limit applies. Not to be mixed with processBodyContent().
     */
    QByteArray readAvailable(unsigned int most);
    /** Whether readAvailable() will return nothing more: the body has ended or has been cut off. */
    bool bodyIsOver() const;

    /**
     * Has @a function called once, in the thread of the request, when the web server has closed the
     * connection or aborted the request, so that nobody waits for the reply any more. The function
     * may delete the request. It is called only for a request that still exists when its hook has
     * returned. It replaces a function that was set before.
     *
     * nginx, Apache and HAProxy close the connection when their client goes away; lighttpd does
     * not. An exception that leaves @a function ends the process.
     */
    void onGone(const std::function<void()>& function);
    /** Whether the web server has closed the connection or aborted the request. */
    bool isGone() const;
    /**
     * Whether at least 16 KiB of the reply can be written without waiting. They cannot while the
     * client is slow and the buffers of the web server are full. A stream of events should then
     * leave something out: while a write waits, every other request waits, too.
     */
    bool canWrite() const;
    /**
     * The descriptor of the connection, for a QSocketNotifier that waits until readAvailable() or
     * canWrite() may have a new result; -1 once finished. Do not read from it, write to it or close
     * it. Wait for input only after readAvailable() has returned nothing, because readFromBody()
     * reads ahead.
     */
    int connection() const;

    /**
     * The request of libfcgi; owned by this, null once finished. From this call on, reads and
     * writes wait for the web server.
     */
    FCGX_Request* fcgxRequest();
    /** Where variables and body come from; owned by this. */
    BwaFcgiInput* input() { return m_input.get(); }
    /** What was asked; owned by this. */
    BwaCgiRequest* cgiRequest() { return m_cgiRequest.get(); }
    /** The reply: a header block, then the body. */
    std::ostream& out() { return m_out; }
    /** Messages for the web server's log. Write no line ends. */
    std::ostream& err();

private:
    friend class BwaDispatcherFcgiService;
    friend class BwaFcgiListener;
    friend class BwaStandardFcgiRequestProcessor;

    class Guard;

    // Most requests log nothing, and making a stream takes longer than reading a cookie.
    struct ErrorStream {
        explicit ErrorStream(FCGX_Stream* errors);

        fcgi_streambuf buffer;
        std::ostream stream; // writes to buffer
    };

    BWA_HIDDEN static void logException(const std::exception& exception);

    BWA_HIDDEN void writeErrorPage(unsigned short statusCode, const QString& reasonPhrase);
    BWA_HIDDEN void join(const QSharedPointer<BwaFcgiConnections>& connections, bool inputIsWhole);
    BWA_HIDDEN void goOn();
    BWA_HIDDEN void tellGone();
    BWA_HIDDEN void logMissingReply();
    BWA_HIDDEN QString reportedPath() const;
    BWA_HIDDEN void finish(const QString& path);
    BWA_HIDDEN void abandon();

    FCGX_Request* m_request; // owned by m_exchange; null once finished
    std::unique_ptr<BwaFcgiExchange> m_exchange;
    std::unique_ptr<BwaFcgiInput> m_input;
    std::unique_ptr<BwaCgiRequest> m_cgiRequest; // reads from m_input
    // Both streams are unbuffered: their destructors, which run after finish(), write nothing.
    std::unique_ptr<BwaFcgiReplyBuffer> m_outBuffer;
    std::ostream m_out;               // writes to m_outBuffer
    std::optional<ErrorStream> m_err; // made when it is first asked for
    std::function<void()> m_whenGone; // empty once called
    Guard* m_guard;                   // not owned; the innermost, or null
    qint64 m_began;                   // ms of the steady clock
};

/** The CGI variables and the body of a FastCGI request. */
class BWA_EXPORT BwaFcgiRequest::BwaFcgiInput : public BwaAbstractCgiInput
{
public:
    /** Copies the variables of @a request; of a repeated name the last value counts. */
    explicit BwaFcgiInput(FCGX_Request* request);
    ~BwaFcgiInput() override;

    QByteArray read(unsigned int size) override;
    /** Null when the variable is not set, empty when it is set to nothing. */
    QString getenv(const QString& name) override;

private:
    friend class BwaFcgiRequest;

    static constexpr int bucketCount = 64;

    // A variable within m_text.
    struct Variable {
        int position; // where its name begins
        int nameSize;
        int valueSize; // the value is one byte after the name
        int next;      // index of the variable before it in the same bucket, or -1
    };

    FCGX_Request* m_request;                   // not owned; null once it has been finished
    BwaFcgiExchange* m_exchange;               // not owned; null: libfcgi reads the body
    QByteArray m_text;                         // the names and values
    QVarLengthArray<Variable, 32> m_variables; // in the order in which they came
    int m_buckets[bucketCount];                // index of the last variable in each, or -1
};

#endif
