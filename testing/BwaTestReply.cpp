// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "testing/BwaTestReply.h"

#include "BwaGlobal.h"

namespace {

bool isNamed(const QPair<QByteArray, QByteArray>& header, const QByteArray& name)
{
    return header.first.compare(name, Qt::CaseInsensitive) == 0;
}

// Reads a status such as "404 Not Found"; false when it has no code of three digits.
bool readStatus(BwaTestReply* reply, const QByteArray& status)
{
    if (reply->statusCode != 0) {
        return true; // the first status counts
    }
    const QByteArray code = status.split(' ').first();
    reply->statusCode = code.toInt();
    reply->reasonPhrase = status.mid(code.size()).trimmed();
    return code.size() == 3 && reply->statusCode >= 100;
}

bool readHeaderLine(BwaTestReply* reply, const QByteArray& line, bool isFirst)
{
    if (isFirst && line.startsWith("HTTP/")) {
        return readStatus(reply, line.mid(line.indexOf(' ')).trimmed());
    }
    const BwaSize colon = line.indexOf(':');
    if (colon <= 0) {
        return false;
    }
    const auto header = qMakePair(line.left(colon).trimmed(), line.mid(colon + 1).trimmed());
    if (isNamed(header, "Status")) {
        return readStatus(reply, header.second);
    }
    reply->headers.append(header);
    return true;
}

// Reads up to the empty line. Returns the position after it; -1 when @a raw does not begin with a
// header block.
BwaSize readHeaderBlock(BwaTestReply* reply, const QByteArray& raw)
{
    BwaSize lineStart = 0;
    for (BwaSize lineEnd = raw.indexOf('\n'); lineEnd >= 0;
         lineEnd = raw.indexOf('\n', lineStart)) {
        const QByteArray line = raw.mid(lineStart, lineEnd - lineStart);
        const bool isFirst = lineStart == 0;
        lineStart = lineEnd + 1;
        if (line.isEmpty() || line == "\r") {
            return isFirst ? -1 : lineStart;
        }
        if (!readHeaderLine(reply, line, isFirst)) {
            return -1;
        }
    }
    return -1;
}

} // namespace

BwaTestReply::BwaTestReply(const QByteArray& rawReply, const QByteArray& errors)
{
    BwaTestReply reply;
    const BwaSize bodyStart = readHeaderBlock(&reply, rawReply);
    if (bodyStart >= 0) {
        *this = reply;
        body = rawReply.mid(bodyStart);
        if (statusCode == 0) {
            statusCode = header("Location").isNull() ? 200 : 302;
        }
    }
    errorText = errors;
    raw = rawReply;
}

QByteArray BwaTestReply::header(const QByteArray& name) const
{
    return headerValues(name).value(0);
}

QList<QByteArray> BwaTestReply::headerValues(const QByteArray& name) const
{
    QList<QByteArray> values;
    for (const auto& header : headers) {
        if (isNamed(header, name)) {
            values.append(header.second);
        }
    }
    return values;
}
