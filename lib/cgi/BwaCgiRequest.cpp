// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiRequest.h"

#include "cgi/BwaAbstractCgiInput.h"
#include "cgi/BwaCgiMultipartFormDataReader.h"
#include "cgi/BwaHeaderValueParser_p.h"
#include "cgi/BwaReadInPieces_p.h"
#include "cgi/BwaUrlEncoding_p.h"

#include <algorithm>
#include <new>
#include <utility>

namespace {

bool isWithin(unsigned int limit, unsigned int number)
{
    return limit == 0 || number <= limit;
}

// How many variables BwaCgiRequest::parseUrlEncodedVariables() finds in @a body.
unsigned int variablesIn(const QByteArray& body)
{
    const auto end = std::find(body.begin(), body.end(), '\0'); // a body ends at its first NUL
    const auto separators = std::count_if(
        body.begin(), end, [](char character) { return character == '&' || character == ';'; });
    return static_cast<unsigned int>(separators) + 1;
}

QString latin1UpToNul(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes.constData());
}

// Whether reading stopped within the body. A second call of processBodyContent() would then take
// the middle of the body for its beginning.
bool wasGivenUpMidway(BwaCgiRequest::BodyFailure failure)
{
    return failure == BwaCgiRequest::BodyFailure::TooManyFormFields ||
        failure == BwaCgiRequest::BodyFailure::TooManyParts ||
        failure == BwaCgiRequest::BodyFailure::OutOfMemory;
}

} // namespace

BwaCgiRequest::BwaCgiRequest(BwaAbstractCgiInput* input)
    : m_input(input)
    , m_environment(input)
    , m_queryVariables(parseUrlEncodedVariables(m_environment.queryString()))
    , m_bodyProcessed(m_environment.contentLength() == 0)
    , m_bodyBytesRead(0)
    , m_bodyFailure(BodyFailure::NoFailure)
{
}

bool BwaCgiRequest::processBodyContent()
{
    if (m_bodyProcessed || wasGivenUpMidway(m_bodyFailure)) {
        return m_bodyProcessed;
    }
    try {
        m_bodyFailure = readAndDecodeBody();
    } catch (const std::bad_alloc&) {
        m_bodyFailure = BodyFailure::OutOfMemory;
    }
    m_bodyProcessed = m_bodyFailure == BodyFailure::NoFailure;
    if (!m_bodyProcessed) {
        m_formVariables.clear();
        m_files.clear();
        m_body.clear();
    }
    return m_bodyProcessed;
}

QByteArray BwaCgiRequest::readFromBody(unsigned int size)
{
    const unsigned int remaining = m_environment.contentLength() - m_bodyBytesRead;
    QByteArray bytes = m_input->read(std::min(size, remaining));
    m_bodyBytesRead += static_cast<unsigned int>(bytes.size());
    return bytes;
}

BwaCgiRequest::BodyFailure BwaCgiRequest::readAndDecodeBody()
{
    if (!isWithin(m_limits.maxBodySize, m_environment.contentLength())) {
        return BodyFailure::TooLarge;
    }
    const QString mediaType =
        BwaCgiEnvironment::parseContentType(m_environment.contentType()).first;
    if (mediaType.isEmpty() || mediaType == QLatin1String("application/x-www-form-urlencoded")) {
        return processUrlEncodedBody();
    }
    return mediaType == QLatin1String("multipart/form-data") ? processMultipartBody()
                                                             : readWholeBody(&m_body);
}

BwaCgiRequest::BodyFailure BwaCgiRequest::readWholeBody(QByteArray* bytes)
{
    const unsigned int length = m_environment.contentLength();
    *bytes = readFromBody(length - m_bodyBytesRead);
    const auto size = static_cast<unsigned int>(bytes->size());
    if (size == length) {
        return BodyFailure::NoFailure;
    }
    return size == BwaReadInPieces::mostBytes ? BodyFailure::TooLarge : BodyFailure::EndedEarly;
}

BwaCgiRequest::BodyFailure BwaCgiRequest::processUrlEncodedBody()
{
    QByteArray bytes;
    const BodyFailure failure = readWholeBody(&bytes);
    if (failure != BodyFailure::NoFailure) {
        return failure;
    }
    if (m_limits.maxFormFields > 0 && variablesIn(bytes) > m_limits.maxFormFields) {
        return BodyFailure::TooManyFormFields;
    }
    m_formVariables = BwaUrlEncoding::variables(std::move(bytes));
    return BodyFailure::NoFailure;
}

BwaCgiRequest::BodyFailure BwaCgiRequest::processMultipartBody()
{
    BwaCgiMultipartFormDataReader reader(this);
    QString name;
    QString fileName;
    QString contentType;
    unsigned int parts = 0;
    unsigned int fields = 0;
    while (reader.nextPart(name, fileName, contentType)) {
        ++parts;
        fields += fileName.isNull() ? 1 : 0;
        if (!isWithin(m_limits.maxParts, parts)) {
            return BodyFailure::TooManyParts;
        }
        if (!isWithin(m_limits.maxFormFields, fields)) {
            return BodyFailure::TooManyFormFields;
        }
        const QByteArray data = reader.readAllFromPart();
        if (fileName.isNull()) {
            m_formVariables.insert(name, latin1UpToNul(data));
        } else {
            m_files.insert(name, BwaCgiFile(fileName, contentType, data));
        }
    }
    if (!reader.failed()) {
        return BodyFailure::NoFailure;
    }
    return m_bodyBytesRead < m_environment.contentLength() ? BodyFailure::EndedEarly
                                                           : BodyFailure::NotClosed;
}

QString BwaCgiRequest::urlDecode(const QString& text)
{
    return BwaUrlEncoding::decoded(text);
}

QMultiHash<QString, QString> BwaCgiRequest::parseUrlEncodedVariables(const QString& text)
{
    return BwaUrlEncoding::variables(text);
}

QList<QPair<QString, QHash<QString, QString>>>
BwaCgiRequest::parseGenericHeader(const QString& text)
{
    return BwaHeaderValueParser(text).takeElements();
}
