// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "hostile/Forms.h"
#include "hostile/Measuring.h"
#include "support/HostileBodies.h"
#include "testing/BwaTestRequest.h"

namespace {

const char* const multipart = "multipart/form-data; boundary=B";
const char* const urlEncoded = "application/x-www-form-urlencoded";

void measureProcessing(const BwaTestRequest& request, bool isTaken)
{
    request.sendTo([isTaken](BwaFcgiRequest* received) {
        BwaCgiRequest* const cgiRequest = received->cgiRequest();
        measure([=] { return cgiRequest->processBodyContent() == isTaken; });
        delete received;
    });
}

void process(const char* contentType, const QByteArray& body, bool isTaken = true)
{
    BwaTestRequest request("POST");
    request.setBody(contentType, body);
    measureProcessing(request, isTaken);
}

template <QByteArray (*Body)(int)>
void processMultipart(int size)
{
    process(multipart, Body(size));
}

template <char Byte>
void processField(int size)
{
    process(urlEncoded, "a=" + QByteArray(size, Byte));
}

void processEndlessHeader(int size)
{
    process(multipart, oneEndlessHeader(size), false);
}

void processLongBoundary(int size)
{
    const QByteArray boundary(8000, 'B');
    const QByteArray nearlyDelimiter = "\r\n--" + boundary + "x";
    process("multipart/form-data; boundary=" + boundary,
            "--" + boundary + "\r\nContent-Disposition: form-data; name=a\r\n\r\n" +
                nearlyDelimiter.repeated(size / nearlyDelimiter.size()) + "\r\n--" + boundary +
                "--\r\n");
}

void processRepeatingBoundary(int size)
{
    process("multipart/form-data; boundary=\"" + repeatingBoundary(size) + "\"",
            nearlyRepeatingDelimiters(size));
}

void processSeparators(int size)
{
    process(urlEncoded, QByteArray(size, '&'));
}

void processDistinctFields(int size)
{
    QByteArray body;
    for (int i = 0; body.size() < size; ++i) {
        body += QByteArray::number(i) + "=&";
    }
    process(urlEncoded, body);
}

void processEscapes(int size)
{
    process(urlEncoded, repeated("%41", size));
}

void processBrokenEscapes(int size)
{
    process(urlEncoded, QByteArray(size, '%'));
}

void processRaw(int size)
{
    process("application/octet-stream", QByteArray(size, 'x'));
}

void processJson(int size)
{
    process("application/json", "\"" + QByteArray(size, 'x') + "\"");
}

void processUpload(int size)
{
    BwaTestRequest request("POST");
    request.addFile("file", "a", "application/octet-stream", QByteArray(size, 'x'));
    measureProcessing(request, true);
}

// Of the largest length only ten bytes come.
void processAnnounced(const char* contentType)
{
    BwaTestRequest request("POST");
    request.setBody(contentType, "0123456789");
    request.setVariable("CONTENT_LENGTH", "4294967295");
    measureProcessing(request, false);
}

void processAnnouncedForm(int /*size*/)
{
    processAnnounced(urlEncoded);
}

void processAnnouncedParts(int /*size*/)
{
    processAnnounced(multipart);
}

void processAnnouncedRaw(int /*size*/)
{
    processAnnounced("application/octet-stream");
}

} // namespace

QList<Form> bodyForms()
{
    return {
        {"time", "delimiters-before-one-empty-line",
         processMultipart<delimitersBeforeOneEmptyLine>},
        {"time", "delimiters-before-one-long-refused-disposition",
         processMultipart<delimitersBeforeOneLongRefusedDisposition>},
        {"time", "colliding-parameters", processMultipart<collidingParameters>},
        {"time", "delimiters-before-one-field", processMultipart<delimitersBeforeOneField>},
        {"time", "refused-dispositions-before-one-empty-line",
         processMultipart<refusedDispositionsBeforeOneEmptyLine>},
        {"time", "one-endless-header", processEndlessHeader},
        {"time", "one-long-header", processMultipart<oneLongHeader>},
        {"time", "tiny-parts", processMultipart<tinyParts>},
        {"time", "tiny-refused-parts", processMultipart<tinyRefusedParts>},
        {"time", "long-boundary", processLongBoundary},
        {"time", "repeating-boundary", processRepeatingBoundary},
        {"time", "nearly-delimiters", processMultipart<nearlyDelimiters>},
        {"time", "line-breaks-only", processMultipart<lineBreaksOnly>},
        {"time", "separators", processSeparators},
        {"time", "distinct-fields", processDistinctFields},
        {"time", "escapes", processEscapes},
        {"time", "broken-escapes", processBrokenEscapes},
        {"memory", "raw-body", processRaw},
        {"memory", "json-body", processJson},
        {"memory", "uploaded-file", processUpload},
        {"memory", "plain-field", processField<'x'>},
        {"memory", "encoded-field", processField<'+'>},
        {"memory", "many-separators", processSeparators},
        {"memory", "announced-form", processAnnouncedForm},
        {"memory", "announced-parts", processAnnouncedParts},
        {"memory", "announced-raw-body", processAnnouncedRaw},
    };
}
