// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiRequest.h"

#include "cgi/BwaAbstractCgiInput.h"
#include "cgi/BwaCgiMultipartFormDataReader.h"
#include "cgi/BwaHeaderValueParser_p.h"
#include "cgi/BwaUrlEncoding_p.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

bool isWithin(unsigned int limit, unsigned int number)
{
    return limit == 0 || number <= limit;
}

// As many as parseUrlEncodedVariables() finds.
unsigned int variablesIn(const QByteArray& body)
{
    const char* const text = body.constData(); // ends at its first NUL
    const auto separators = std::count_if(text, text + std::strlen(text), [](char character) {
        return character == '&' || character == ';';
    });
    return static_cast<unsigned int>(separators) + 1;
}

// 8-bit text ends at its first NUL.
QString textOf(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes.constData());
}

} // namespace

BwaCgiRequest::BwaCgiRequest(BwaAbstractCgiInput* input)
    : m_input(input)
    , m_environment(input)
    , m_queryVariables(parseUrlEncodedVariables(m_environment.queryString()))
    , m_bodyProcessed(m_environment.contentLength() == 0)
    , m_bodyBytesRead(0)
{
}

bool BwaCgiRequest::processBodyContent()
{
    if (m_bodyProcessed) {
        return true;
    }
    if (!isWithin(m_limits.maxBodySize, m_environment.contentLength())) {
        return false;
    }
    const QString mediaType =
        BwaCgiEnvironment::parseContentType(m_environment.contentType()).first;
    if (mediaType.isEmpty() || mediaType == QLatin1String("application/x-www-form-urlencoded")) {
        m_bodyProcessed = processUrlEncodedBody();
    } else if (mediaType == QLatin1String("multipart/form-data")) {
        m_bodyProcessed = processMultipartBody();
    } else {
        m_bodyProcessed = processOtherBody();
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

QByteArray BwaCgiRequest::readWholeBody(bool* complete)
{
    const unsigned int length = m_environment.contentLength();
    QByteArray bytes = readFromBody(length - m_bodyBytesRead);
    *complete = static_cast<unsigned int>(bytes.size()) == length;
    return bytes;
}

bool BwaCgiRequest::processUrlEncodedBody()
{
    bool complete = false;
    QByteArray bytes = readWholeBody(&complete);
    if (!complete || (m_limits.maxFormFields > 0 && variablesIn(bytes) > m_limits.maxFormFields)) {
        return false;
    }
    m_formVariables = urlEncodedVariables(std::move(bytes));
    return true;
}

bool BwaCgiRequest::processMultipartBody()
{
    const bool complete = readParts();
    if (!complete) {
        m_formVariables.clear();
        m_files.clear();
    }
    return complete;
}

bool BwaCgiRequest::readParts()
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
        if (!isWithin(m_limits.maxParts, parts) || !isWithin(m_limits.maxFormFields, fields)) {
            m_bodyBytesRead = m_environment.contentLength(); // a second call must not go on here
            return false;
        }
        const QByteArray data = reader.readAllFromPart();
        if (reader.failed()) {
            break;
        }
        if (fileName.isNull()) {
            m_formVariables.insert(name, textOf(data));
        } else {
            m_files.insert(name, BwaCgiFile(fileName, contentType, data));
        }
    }
    return !reader.failed();
}

bool BwaCgiRequest::processOtherBody()
{
    bool complete = false;
    m_body = readWholeBody(&complete);
    if (!complete) {
        m_body.clear();
    }
    return complete;
}

QString BwaCgiRequest::urlDecode(const QString& text)
{
    return urlDecoded(text);
}

QMultiHash<QString, QString> BwaCgiRequest::parseUrlEncodedVariables(const QString& text)
{
    return urlEncodedVariables(text);
}

QList<QPair<QString, QHash<QString, QString>>>
BwaCgiRequest::parseGenericHeader(const QString& text)
{
    return BwaHeaderValueParser(text).takeElements();
}
