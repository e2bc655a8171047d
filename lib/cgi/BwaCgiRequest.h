// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWACGIREQUEST_H
#define BWACGIREQUEST_H

#include "cgi/BwaCgiEnvironment.h"
#include "cgi/BwaCgiFile.h"
#include "cgi/BwaRequestLimits.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QPair>
#include <QString>

class BwaAbstractCgiInput;

/**
 * One request as an application sees it: environment and query variables at once, form variables,
 * files or the raw body after processBodyContent() has returned true.
 *
 * Variables have several values a name: value(name) is the last one sent, values(name) all of them,
 * last first.
 */
class BWA_EXPORT BwaCgiRequest
{
    Q_DISABLE_COPY(BwaCgiRequest)

public:
    /** Why processBodyContent() has returned false. */
    enum class BodyFailure {
        NoFailure,  /**< It has not, or has not been called. */
        EndedEarly, /**< Fewer bytes have come than CONTENT_LENGTH announced. */
        NotClosed,  /**< All bytes of a multipart form are there, its last delimiter is not. */
        TooLarge,   /**< More than maxBodySize bytes, or than a byte array holds. */
        TooManyFormFields, /**< More than maxFormFields. */
        TooManyParts,      /**< More than maxParts. */
        OutOfMemory        /**< The body or what it decodes to could not be allocated. */
    };

    /** Reads the variables from @a input, which must outlive this; reads nothing of the body. */
    explicit BwaCgiRequest(BwaAbstractCgiInput* input);

    /** What the body may hold, to be set before it is processed; without, there are no limits. */
    void setRequestLimits(const BwaRequestLimits& limits) { m_limits = limits; }
    /** As set; on a request from a listener, the listener's. */
    const BwaRequestLimits& requestLimits() const { return m_limits; }
    /**
     * Reads and decodes the body; at most once with success, later calls return true at once. A
     * request without CONTENT_LENGTH has no body, which is a success.
     *
     * @return false when the body ends early or, being multipart, before its closing delimiter,
     * when it is beyond a limit, and when memory runs out; bodyFailure() tells which. The bytes
     * read are then lost, and neither variables nor files nor body are kept. With Qt 5 a body other
     * than multipart fails from 2^31 - 1024 bytes on, a form from half of that on.
     */
    bool processBodyContent();
    /**
     * The next @a size bytes of the body at most, never beyond CONTENT_LENGTH; without limits.
     * Fewer when the body ends early, and never more than 2^31 - 1025 in one call.
     */
    QByteArray readFromBody(unsigned int size);

    /**
     * Decodes "+" and "%XX" (application/x-www-form-urlencoded). Each escape becomes the one
     * character of that code, so UTF-8 sequences stay apart; an escape that is none stays as it is.
     * The result of an empty text is null.
     */
    static QString urlDecode(const QString& text);
    /**
     * The variables of a query string or form body: pairs are separated by "&" or ";". A name
     * without "=" has an empty value; empty names count, so an empty text gives one variable.
     */
    static QMultiHash<QString, QString> parseUrlEncodedVariables(const QString& text);
    /**
     * The elements, separated by ",", of a header value: a main value and its parameters, which
     * ";" introduces. Values may be quoted strings. A parameter without "=" has a null value, one
     * with nothing after it an empty one; of a repeated name the last value counts. Nothing is
     * lower-cased; the list is never empty.
     */
    static QList<QPair<QString, QHash<QString, QString>>> parseGenericHeader(const QString& text);

    /** Where variables and body come from; not owned. */
    BwaAbstractCgiInput* input() const { return m_input; }
    /** The CGI variables. */
    const BwaCgiEnvironment& environment() const { return m_environment; }
    /** The variables of the query string. */
    QMultiHash<QString, QString> queryVariables() const { return m_queryVariables; }
    /** The fields of a form, but for its files; empty before processBodyContent(). */
    QMultiHash<QString, QString> formVariables() const { return m_formVariables; }
    /** By field name; of two files in the same field the last one counts. */
    QHash<QString, BwaCgiFile> files() const { return m_files; }
    /** The raw body of any media type but the two of forms. */
    QByteArray body() const { return m_body; }
    /** The body has been read and decoded completely; true at once when there is none. */
    bool bodyProcessed() const { return m_bodyProcessed; }
    /** Body bytes taken from the input so far. */
    unsigned int bodyBytesRead() const { return m_bodyBytesRead; }
    /** Of the last call of processBodyContent(). A body beyond a limit deserves 413, others 400. */
    BodyFailure bodyFailure() const { return m_bodyFailure; }

private:
    BodyFailure readAndDecodeBody();
    BodyFailure processUrlEncodedBody();
    BodyFailure processMultipartBody();
    BodyFailure readWholeBody(QByteArray* bytes);

    BwaAbstractCgiInput* m_input; // not owned
    BwaCgiEnvironment m_environment;
    QMultiHash<QString, QString> m_queryVariables;
    QMultiHash<QString, QString> m_formVariables;
    QHash<QString, BwaCgiFile> m_files;
    QByteArray m_body;
    bool m_bodyProcessed;
    unsigned int m_bodyBytesRead;
    BodyFailure m_bodyFailure;
    BwaRequestLimits m_limits;
};

#endif
