// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// A request with a body: CONTENT_TYPE in the first line, CONTENT_LENGTH in the second (the true one
// when it is empty), then the body. What is kept agrees with literal models, reading again does
// nothing, and nothing is read beyond the announced length. With limits, a body within them is read
// as without limits, and any other fails.

#include "Choices.h"
#include "Fuzzing.h"
#include "MultipartBody.h"
#include "Texts.h"
#include "cgi/BwaCgiRequest.h"
#include "support/LiteralHeaderValue.h"
#include "support/LiteralMultipartReader.h"
#include "support/MemoryCgiInput.h"
#include "support/ShownText.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

struct Outcome {
    bool complete = true;
    QMultiHash<QString, QString> variables;
    QHash<QString, BwaCgiFile> files;
    QByteArray body;
    unsigned int parts = 0;
};

std::string shownOutcome(const Outcome& outcome)
{
    if (!outcome.complete) {
        return "failed";
    }
    std::string text = shownVariables(outcome.variables) + "\n";
    QStringList names = outcome.files.keys();
    names.sort();
    for (const QString& name : std::as_const(names)) {
        const BwaCgiFile file = outcome.files.value(name);
        text += shownName(name) + "=" + shown(file.fileName()) + "|" + shown(file.contentType()) +
            "|" + file.data().toStdString() + "\n";
    }
    return text + outcome.body.toStdString();
}

Outcome literalMultipart(const QString& boundary, MemoryCgiInput* input, unsigned int length)
{
    Outcome outcome;
    LiteralMultipartReader reader(boundary.toLatin1(), input, length);
    QString name;
    QString fileName;
    QString contentType;
    while (reader.nextPart(name, fileName, contentType)) {
        ++outcome.parts;
        const QByteArray data = reader.readAllFromPart();
        if (fileName.isNull()) {
            outcome.variables.insert(name, variableText(data));
        } else {
            outcome.files.insert(name, BwaCgiFile(fileName, contentType, data));
        }
    }
    outcome.complete = !reader.failed;
    return outcome;
}

Outcome literalOutcome(const QString& contentType, MemoryCgiInput* input, unsigned int length)
{
    Outcome outcome;
    const auto type = literalHeaderValue(contentType).first();
    if (length == 0) {
        return outcome;
    }
    if (type.first == QLatin1String("multipart/form-data")) {
        return literalMultipart(type.second.value(QStringLiteral("boundary")), input, length);
    }
    const bool isForm =
        type.first.isEmpty() || type.first == QLatin1String("application/x-www-form-urlencoded");
    const QByteArray bytes = input->read(length);
    outcome.complete = static_cast<unsigned int>(bytes.size()) == length;
    if (outcome.complete && isForm) {
        outcome.variables = literalUrlEncodedVariables(variableText(bytes));
    } else if (outcome.complete) {
        outcome.body = bytes;
    }
    return outcome;
}

void expectNothingKept(const BwaCgiRequest& request)
{
    EXPECT_TRUE(request.formVariables().isEmpty());
    EXPECT_TRUE(request.files().isEmpty());
    EXPECT_TRUE(request.body().isEmpty());
}

bool isWithin(unsigned int limit, unsigned int number)
{
    return limit == 0 || number <= limit;
}

void compareWithLimits(MemoryCgiInput* input, const Outcome& unlimited, std::minstd_rand& choices)
{
    BwaRequestLimits limits;
    limits.maxBodySize = below(4, choices) == 0 ? 1 + below(1000, choices) : 0;
    limits.maxFormFields = below(5, choices);
    limits.maxParts = below(5, choices);
    BwaCgiRequest request(input);
    request.setRequestLimits(limits);

    const bool complete = request.processBodyContent();

    const auto fields = static_cast<unsigned int>(unlimited.variables.size());
    EXPECT_EQ(
        complete,
        unlimited.complete && isWithin(limits.maxBodySize, request.environment().contentLength()) &&
            isWithin(limits.maxFormFields, fields) && isWithin(limits.maxParts, unlimited.parts));
    EXPECT_EQ(request.bodyFailure() == BwaCgiRequest::BodyFailure::NoFailure, complete);
    EXPECT_EQ(request.bodyBytesRead(), static_cast<unsigned int>(input->position));
    if (complete) {
        EXPECT_EQ(request.formVariables(), unlimited.variables);
    } else {
        expectNothingKept(request);
        EXPECT_FALSE(request.processBodyContent());
        expectNothingKept(request);
    }
}

} // namespace

void fuzz(const QByteArray& input)
{
    Choices choices(input);
    const QByteArray contentType = choices.line();
    const QByteArray length = choices.line();
    MemoryCgiInput cgiInput(contentType.constData(), choices.rest());
    if (!length.isEmpty()) {
        cgiInput.set("CONTENT_LENGTH", length.constData());
    }
    MemoryCgiInput modelInput = cgiInput;
    MemoryCgiInput limitedInput = cgiInput;
    BwaCgiRequest request(&cgiInput);

    const bool complete = request.processBodyContent();

    EXPECT_LE(request.bodyBytesRead(), request.environment().contentLength());
    EXPECT_EQ(request.bodyBytesRead(), static_cast<unsigned int>(cgiInput.position));
    const Outcome outcome = {complete, request.formVariables(), request.files(), request.body()};
    const Outcome expected = literalOutcome(variableText(contentType), &modelInput,
                                            request.environment().contentLength());
    EXPECT_EQ(shownOutcome(outcome), shownOutcome(expected));
    if (complete) {
        const int reads = cgiInput.readSizes.size();
        EXPECT_TRUE(request.processBodyContent());
        EXPECT_EQ(cgiInput.readSizes.size(), reads);
    } else {
        expectNothingKept(request);
    }
    std::minstd_rand random = choicesFor(input);
    compareWithLimits(&limitedInput, expected, random);
}
