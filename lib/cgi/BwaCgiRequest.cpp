// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiRequest.h"

#include "cgi/BwaAbstractCgiInput.h"
#include "cgi/BwaCgiMultipartFormDataReader.h"
#include "cgi/BwaHeaderValueParser_p.h"
#include "cgi/BwaTextScanning_p.h"

#include <algorithm>

namespace {

int hexDigitValue(QChar character)
{
    const ushort code = character.unicode();
    if (code >= '0' && code <= '9') {
        return code - '0';
    }
    if (code >= 'a' && code <= 'f') {
        return code - 'a' + 10;
    }
    return code >= 'A' && code <= 'F' ? code - 'A' + 10 : -1;
}

// The number that two characters stand for, or -1. As Qt's base-16 conversion has it, a blank may
// stand on either side of a single digit, and a plus before it.
int escapedCode(QChar first, QChar second)
{
    const int high = hexDigitValue(first);
    const int low = hexDigitValue(second);
    if (high >= 0 && low >= 0) {
        return 16 * high + low;
    }
    if (high >= 0) {
        return second.isSpace() ? high : -1;
    }
    return first.isSpace() || first == QLatin1Char('+') ? low : -1;
}

// Decodes from @a read to @a end; the result is written to @a written, and its end returned.
QChar* decode(const QChar* read, const QChar* end, QChar* written)
{
    while (read < end) {
        const bool isEscape = *read == QLatin1Char('%') && end - read > 2;
        const int code = isEscape ? escapedCode(read[1], read[2]) : -1;
        if (code >= 0) {
            *written++ = QChar(code);
            read += 3;
        } else {
            *written++ = *read == QLatin1Char('+') ? QChar(QLatin1Char(' ')) : *read;
            ++read;
        }
    }
    return written;
}

QString decodedBetween(const QString& text, int begin, int end)
{
    if (begin >= end) {
        return QString();
    }
    const int size = end - begin;
    if (indexOfAny<'%', '+'>(text, begin, end) == end) {
        return QString(text.constData() + begin, size);
    }
    const QChar* const encoded = text.constData() + begin;
    QString decoded(size, Qt::Uninitialized);
    decoded.truncate(
        static_cast<int>(decode(encoded, encoded + size, decoded.data()) - decoded.data()));
    return decoded;
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
    if (!complete) {
        return false;
    }
    const QString text = textOf(bytes);
    bytes.clear(); // not held beside the text and the variables
    m_formVariables = parseUrlEncodedVariables(text);
    return true;
}

bool BwaCgiRequest::processMultipartBody()
{
    BwaCgiMultipartFormDataReader reader(this);
    QString name;
    QString fileName;
    QString contentType;
    while (reader.nextPart(name, fileName, contentType)) {
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
    if (reader.failed()) {
        m_formVariables.clear();
        m_files.clear();
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
    return decodedBetween(text, 0, text.size());
}

QMultiHash<QString, QString> BwaCgiRequest::parseUrlEncodedVariables(const QString& text)
{
    QMultiHash<QString, QString> variables;
    int begin = 0;
    while (begin <= text.size()) {
        int end = indexOfAny<'=', '&', ';'>(text, begin, text.size());
        const QString name = decodedBetween(text, begin, end);
        QString value = QString::fromLatin1("");
        if (end < text.size() && text.at(end) == QLatin1Char('=')) {
            const int valueBegin = end + 1;
            end = indexOfAny<'&', ';'>(text, valueBegin, text.size());
            value = decodedBetween(text, valueBegin, end);
        }
        variables.insert(name, value);
        begin = end + 1;
    }
    return variables;
}

QList<QPair<QString, QHash<QString, QString>>>
BwaCgiRequest::parseGenericHeader(const QString& text)
{
    return BwaHeaderValueParser(text).takeElements();
}
