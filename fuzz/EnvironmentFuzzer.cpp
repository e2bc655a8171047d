// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// The variables of a request, one "NAME=VALUE" a line: each gives what the last entry of its name
// holds, the parsed ones agree with literal models, and libfcgi's array is left as it was.

#include "Fuzzing.h"
#include "Texts.h"
#include "cgi/BwaCgiEnvironment.h"
#include "fcgi/BwaFcgiRequest.h"
#include "support/LiteralServerProtocol.h"
#include "support/QtPrinters.h"
#include "support/ShownText.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

QByteArray nameOf(const QByteArray& entry)
{
    return entry.left(entry.indexOf('='));
}

// The last entry of that name counts.
QString literalVariable(const QList<QByteArray>& entries, const QByteArray& name)
{
    QString value;
    for (const QByteArray& entry : entries) {
        if (entry.contains('=') && nameOf(entry) == name) {
            value = QString::fromLatin1(entry.mid(name.size() + 1));
        }
    }
    return value;
}

quint64 literalNumber(const QString& text, quint64 largest)
{
    bool ok = false;
    const quint64 number = text.trimmed().toULongLong(&ok);
    const bool isPlain = QRegExp(QStringLiteral("[0-9]+")).exactMatch(text.trimmed());
    return ok && isPlain && number <= largest ? number : 0;
}

void expectEnvironment(BwaFcgiRequest::BwaFcgiInput& input, const QList<QByteArray>& entries)
{
    const BwaCgiEnvironment environment(&input);

    EXPECT_EQ(environment.scriptName(), literalVariable(entries, "SCRIPT_NAME"));
    EXPECT_EQ(environment.pathInfo(), literalVariable(entries, "PATH_INFO"));
    EXPECT_EQ(environment.httpCookie(), literalVariable(entries, "HTTP_COOKIE"));
    EXPECT_EQ(environment.https(), literalVariable(entries, "HTTPS") == QLatin1String("on"));
    EXPECT_EQ(environment.serverPort(),
              literalNumber(literalVariable(entries, "SERVER_PORT"), 65535));
    EXPECT_EQ(environment.contentLength(),
              literalNumber(literalVariable(entries, "CONTENT_LENGTH"), 4294967295U));
}

void expectServerProtocol(const QString& text)
{
    const auto protocol = BwaCgiEnvironment::parseServerProtocol(text);
    const auto expected = literalServerProtocol(text);
    EXPECT_EQ(protocol.protocol, expected.protocol);
    EXPECT_EQ(protocol.majorVersion, expected.majorVersion);
    EXPECT_EQ(protocol.minorVersion, expected.minorVersion);
}

} // namespace

void fuzz(const QByteArray& input)
{
    QList<QByteArray> entries;
    std::vector<char*> array;
    for (const QByteArray& line : input.split('\n')) {
        entries.append(QByteArray(line.constData())); // ends at a NUL
        array.push_back(entries.last().data());
    }
    array.push_back(nullptr);
    const std::vector<char*> arrayBefore = array;
    QList<QByteArray> entriesBefore;
    for (const QByteArray& entry : std::as_const(entries)) {
        entriesBefore.append(QByteArray(entry.constData(), entry.size())); // not shared
    }

    FCGX_Request request = {};
    request.envp = array.data();
    BwaFcgiRequest::BwaFcgiInput cgiInput(&request);

    for (const QByteArray& entry : std::as_const(entries)) {
        const QByteArray name = nameOf(entry);
        EXPECT_EQ(shown(cgiInput.getenv(QString::fromLatin1(name))),
                  shown(literalVariable(entries, name)));
    }
    expectEnvironment(cgiInput, entries);
    expectServerProtocol(literalVariable(entries, "SERVER_PROTOCOL"));
    EXPECT_EQ(entries, entriesBefore);
    EXPECT_EQ(array, arrayBefore);
}
