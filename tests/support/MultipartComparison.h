// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef MULTIPARTCOMPARISON_H
#define MULTIPARTCOMPARISON_H

#include "cgi/BwaCgiMultipartFormDataReader.h"
#include "cgi/BwaCgiRequest.h"
#include "support/LiteralMultipartReader.h"
#include "support/MemoryCgiInput.h"
#include "support/ShownText.h"

#include <algorithm>
#include <string>
#include <utility>

/** Hands out no more than some bytes at a time, as an input at the end of its data does. */
class SteppingCgiInput : public MemoryCgiInput
{
public:
    QByteArray read(unsigned int size) override
    {
        return MemoryCgiInput::read(step == 0 ? size : std::min(size, step));
    }

    unsigned int step = 0; // bytes; 0: as many as asked for
};

/** The reader and its literal model on the same body, doing the same. */
class MultipartComparison
{
public:
    MultipartComparison(const QByteArray& boundary, const QByteArray& body,
                        unsigned int announcedLength, unsigned int step)
        : m_request(prepare(&m_input, boundary, body, announcedLength, step))
        , m_reader(&m_request)
        , m_model(boundary, prepare(&m_modelInput, boundary, body, announcedLength, step),
                  announcedLength)
    {
    }

    bool failed() const { return m_model.failed; }
    bool isFinished() const { return failed() || m_finished; }

    /** Does one operation with both. Each result ends with the state that it has left behind. */
    std::pair<std::string, std::string> act(int operation, unsigned int size)
    {
        const std::string result = resultOf(m_reader, operation, size);
        const std::string modelResult = resultOf(m_model, operation, size);
        m_finished = modelResult == "no part";
        return {result + stateOf(m_reader, m_reader.failed(), m_reader.lookahead(), m_input),
                modelResult + stateOf(m_model, m_model.failed, m_model.lookahead, m_modelInput)};
    }

private:
    static MemoryCgiInput* prepare(SteppingCgiInput* input, const QByteArray& boundary,
                                   const QByteArray& body, unsigned int announcedLength,
                                   unsigned int step)
    {
        input->step = step;
        input->body = body;
        input->set("CONTENT_TYPE", "multipart/form-data; boundary=\"" + boundary + "\"");
        input->set("CONTENT_LENGTH", QByteArray::number(announcedLength));
        return input;
    }

    template <typename Reader>
    static std::string resultOf(Reader& reader, int operation, unsigned int size)
    {
        switch (operation) {
        case 0:
            return reader.isAtEndOfPart() ? "end" : "no end";
        case 1:
            reader.skipEndOfPart();
            return "skipped";
        case 2:
            return reader.readAllFromPart().toStdString();
        case 3:
        case 4:
            return reader.readFromPart(size).toStdString();
        default:
            return nextPartOf(reader);
        }
    }

    template <typename Reader>
    static std::string nextPartOf(Reader& reader)
    {
        QString name;
        QString filename;
        QString contentType;
        if (!reader.nextPart(name, filename, contentType)) {
            return "no part";
        }
        return shown(name) + "|" + shown(filename) + "|" + shown(contentType);
    }

    template <typename Reader>
    static std::string stateOf(const Reader& reader, bool failed, const QByteArray& lookahead,
                               const MemoryCgiInput& input)
    {
        std::string text = failed ? "\nfailed\n" : "\nusable\n";
        text += lookahead.toStdString() + "\ndelimiter at " +
            std::to_string(reader.indexOfFirstBoundaryDelimiter(lookahead)) + "\nread " +
            std::to_string(input.position) + " by";
        for (const unsigned int size : input.readSizes) {
            text += " " + std::to_string(size);
        }
        return text;
    }

    SteppingCgiInput m_input;
    SteppingCgiInput m_modelInput;
    BwaCgiRequest m_request;
    BwaCgiMultipartFormDataReader m_reader;
    LiteralMultipartReader m_model;
    bool m_finished = false;
};

#endif
