// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef LITERALMULTIPARTREADER_H
#define LITERALMULTIPARTREADER_H

#include "cgi/BwaAbstractCgiInput.h"
#include "support/LiteralHeaderValue.h"

#include <QByteArray>
#include <QString>

#include <algorithm>

/**
 * A multipart reader that does each step as its rule reads: every search starts at the front of the
 * lookahead, and every consumed byte is removed from it.
 *
 * It is quadratic for hostile bodies. The library must give the same parts from the same reads.
 */
class LiteralMultipartReader
{
public:
    LiteralMultipartReader(const QByteArray& boundary, BwaAbstractCgiInput* input,
                           unsigned int contentLength)
        : delimiter("\r\n--" + boundary + "\r\n")
        , closeDelimiter("\r\n--" + boundary + "--\r\n")
        , lookahead("\r\n")
        , m_input(input)
        , m_bytesLeft(contentLength)
    {
    }

    bool nextPart(QString& name, QString& filename, QString& contentType)
    {
        while (!failed) {
            skipEndOfPart();
            if (failed || lookahead.startsWith(closeDelimiter)) {
                return false;
            }
            lookahead.remove(0, delimiter.size());
            while (!failed && !lookahead.contains("\r\n\r\n")) {
                failed = !refill();
            }
            if (failed) {
                return false;
            }
            const int blankLine = lookahead.indexOf("\r\n\r\n");
            if (processPartHeader(lookahead.left(blankLine + 2), name, filename, contentType)) {
                lookahead.remove(0, blankLine + 4);
                return true;
            }
        }
        return false;
    }

    QByteArray readFromPart(unsigned int size)
    {
        QByteArray result;
        if (failed || isAtEndOfPart()) {
            return result;
        }
        while (true) {
            BwaSize safe = indexOfFirstBoundaryDelimiter(lookahead);
            if (safe < 0) {
                safe = std::max<BwaSize>(0, lookahead.size() - closeDelimiter.size());
            }
            const unsigned int wanted = size - static_cast<unsigned int>(result.size());
            const int take = static_cast<int>(std::min(static_cast<unsigned int>(safe), wanted));
            result.append(lookahead.left(take));
            lookahead.remove(0, take);
            if (isAtEndOfPart() || static_cast<unsigned int>(result.size()) == size) {
                return result;
            }
            if (!refill()) {
                failed = true;
                return result;
            }
        }
    }

    QByteArray readAllFromPart()
    {
        QByteArray result;
        while (!failed && !isAtEndOfPart()) {
            result.append(readFromPart(4096));
        }
        return result;
    }

    bool isAtEndOfPart()
    {
        if (failed) {
            return false;
        }
        if (lookahead.size() < closeDelimiter.size()) {
            lookahead.append(
                readFromBody(static_cast<unsigned int>(closeDelimiter.size() - lookahead.size())));
            failed = lookahead.size() < delimiter.size();
        }
        return lookahead.startsWith(delimiter) || lookahead.startsWith(closeDelimiter);
    }

    void skipEndOfPart()
    {
        do {
            const int index = indexOfFirstBoundaryDelimiter(lookahead);
            if (index >= 0) {
                lookahead.remove(0, index);
                return;
            }
            lookahead = lookahead.right(closeDelimiter.size() - 1);
        } while (refill());
        failed = true;
    }

    int indexOfFirstBoundaryDelimiter(const QByteArray& data) const
    {
        const int first = data.indexOf(delimiter);
        const int firstClose = data.indexOf(closeDelimiter);
        return first < 0 || (firstClose >= 0 && firstClose < first) ? firstClose : first;
    }

    bool processPartHeader(const QByteArray& header, QString& name, QString& filename,
                           QString& contentType)
    {
        bool found = false;
        const QByteArray value = lineAfter("Content-Disposition: ", header, &found);
        if (!found) {
            return false;
        }
        const QString text = QString::fromUtf8(value.constData(), value.size()); // with its NULs
        const auto disposition = literalHeaderValue(text).first();
        if (disposition.first != QLatin1String("form-data") ||
            !disposition.second.contains(QStringLiteral("name"))) {
            return false;
        }
        name = disposition.second.value(QStringLiteral("name"));
        filename = literalUrlDecode(disposition.second.value(QStringLiteral("filename")));
        contentType = QString::fromLatin1(lineAfter("Content-Type: ", header, &found).constData());
        return true;
    }

    const QByteArray delimiter;
    const QByteArray closeDelimiter;
    QByteArray lookahead;
    bool failed = false;

private:
    static QByteArray lineAfter(const char* label, const QByteArray& header, bool* found)
    {
        const int position = header.indexOf(label);
        *found = position >= 0;
        if (!*found) {
            return QByteArray();
        }
        const int start = position + static_cast<int>(qstrlen(label));
        return header.mid(start, header.indexOf("\r\n", start) - start);
    }

    QByteArray readFromBody(unsigned int size)
    {
        QByteArray bytes = m_input->read(std::min(size, m_bytesLeft));
        m_bytesLeft -= static_cast<unsigned int>(bytes.size());
        return bytes;
    }

    bool refill()
    {
        const QByteArray bytes = readFromBody(4096);
        lookahead.append(bytes);
        return !bytes.isEmpty();
    }

    BwaAbstractCgiInput* m_input; // not owned; must outlive this
    unsigned int m_bytesLeft;
};

#endif
