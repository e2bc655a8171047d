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
 * One request as an application sees it. Environment and query variables can be read at once; form
 * variables, files or the raw body can be read after processBodyContent() has returned true.
 *
 * A variable may be sent several times: value(name) is the value sent last, values(name) is all of
 * them, the last one first.
 */
class BWA_EXPORT BwaCgiRequest
{
    Q_DISABLE_COPY(BwaCgiRequest)

public:
    /** Why processBodyContent() returned false. */
    enum class BodyFailure {
        NoFailure,  /**< It returned true, or has not been called. */
        EndedEarly, /**< Fewer bytes arrived than CONTENT_LENGTH announced. */
        NotClosed,  /**< All bytes arrived, but a multipart form has no closing delimiter. */
        TooLarge, /**< The body has more than maxBodySize bytes, or more than a byte array holds. */
        TooManyFormFields, /**< More than maxFormFields. */
        TooManyParts,      /**< More than maxParts. */
        OutOfMemory        /**< The body or what it decodes to could not be allocated. */
    };

    /** Reads the variables from @a input, which must outlive this; reads nothing of the body. */
    explicit BwaCgiRequest(BwaAbstractCgiInput* input);

    /** Limits the body. To be called before processBodyContent(); at first there are no limits. */
    void setRequestLimits(const BwaRequestLimits& limits) { m_limits = limits; }
    /** The limits that were set; a listener sets its own on each of its requests. */
    const BwaRequestLimits& requestLimits() const { return m_limits; }
    /**
     * Reads and decodes the body. Once it has succeeded, later calls return true and do nothing. A
     * request without CONTENT_LENGTH has no body, which is a success.
     *
     * @return false when the body ends early or, being multipart, before its closing delimiter,
     * when it is beyond a limit, and when memory runs out; bodyFailure() tells which. The bytes
     * read are then lost, and there are no variables, files or body. A body other than multipart
     * fails from 2^31 - 1024 bytes on; with Qt 5, so does a form with a value of 2^30 bytes.
     */
    bool processBodyContent();
    /**
     * The next @a size bytes of the body, but none beyond CONTENT_LENGTH. They are fewer when the
     * body ends early, and at most 2^31 - 1025 in one call. The request's limits do not apply.
     */
    QByteArray readFromBody(unsigned int size);

    /**
     * Decodes "+" and "%XX" (application/x-www-form-urlencoded). Each escape becomes the Latin-1
     * character of that code, so a UTF-8 sequence becomes several characters; a "%" without two
     * hexadecimal digits after it stays as it is. The result of an empty text is null.
     */
    static QString urlDecode(const QString& text);
    /**
     * The variables of a query string or form body, which "&" or ";" separates. A name without "="
     * has an empty value. A name may be empty, so an empty text gives one variable.
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
    /** The fields of a form without its files; empty before processBodyContent(). */
    QMultiHash<QString, QString> formVariables() const { return m_formVariables; }
    /** The files of a form by the names of their fields; of two in one field the last counts. */
    QHash<QString, BwaCgiFile> files() const { return m_files; }
    /**
     * The raw body; empty for the media types of forms, which become formVariables() and files().
     */
    QByteArray body() const { return m_body; }
    /** The body has been read and decoded completely; true from the start when there is none. */
    bool bodyProcessed() const { return m_bodyProcessed; }
    /** How many bytes of the body have been read from the input so far. */
    unsigned int bodyBytesRead() const { return m_bodyBytesRead; }
    /**
     * Why the last processBodyContent() failed. Answer a body beyond a limit with 413, others with
     * 400.
     */
    BodyFailure bodyFailure() const { return m_bodyFailure; }

private:
    BWA_HIDDEN BodyFailure readAndDecodeBody();
    BWA_HIDDEN BodyFailure processUrlEncodedBody();
    BWA_HIDDEN BodyFailure processMultipartBody();
    BWA_HIDDEN BodyFailure readWholeBody(QByteArray* bytes);

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
