// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "RequestFile.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace {

enum RecordType : char { BeginRequest = 1, Params = 4, Stdin = 5 };

const std::size_t largestContent = 32768; // bytes of a record, as nginx cuts a body

std::string contentsOf(const std::string& file)
{
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        throw std::runtime_error("cannot read " + file);
    }
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

void appendRecord(std::string& records, RecordType type, const std::string& content)
{
    const std::size_t padding = (8 - content.size() % 8) % 8;
    const char header[8] = {1, // the version
                            type,
                            0, // the request's id, two bytes
                            1,
                            static_cast<char>(content.size() >> 8),
                            static_cast<char>(content.size()),
                            static_cast<char>(padding),
                            0};
    records.append(header, sizeof header).append(content).append(padding, '\0');
}

void appendStream(std::string& records, RecordType type, const std::string& content)
{
    for (std::size_t begin = 0; begin < content.size(); begin += largestContent) {
        appendRecord(records, type, content.substr(begin, largestContent));
    }
    appendRecord(records, type, std::string());
}

void appendLength(std::string& params, std::size_t length)
{
    if (length < 128) {
        params += static_cast<char>(length);
        return;
    }
    params += static_cast<char>(length >> 24 | 0x80);
    params += static_cast<char>(length >> 16);
    params += static_cast<char>(length >> 8);
    params += static_cast<char>(length);
}

void appendParam(std::string& params, const std::string& name, const std::string& value)
{
    appendLength(params, name.size());
    appendLength(params, value.size());
    params += name + value;
}

std::string variableName(std::string headerName)
{
    const auto toVariableCharacter = [](unsigned char character) {
        return character == '-' ? '_' : static_cast<char>(std::toupper(character));
    };
    std::transform(headerName.begin(), headerName.end(), headerName.begin(), toVariableCharacter);
    return "HTTP_" + headerName;
}

// The variables of nginx's own list of parameters, in its order; the script name and the path are
// those of the usual split.
void appendRequestLine(std::string& params, const std::string& requestLine,
                       const std::string& contentType, std::size_t contentLength)
{
    std::istringstream words(requestLine);
    std::string method;
    std::string target;
    std::string protocol;
    words >> method >> target >> protocol;
    const std::string path = target.substr(0, target.find('?'));
    const std::string query = path.size() < target.size() ? target.substr(path.size() + 1) : "";
    const std::size_t split = path.find('/', 1);
    if (protocol.empty() || split == std::string::npos) {
        throw std::runtime_error("no request in: " + requestLine);
    }
    appendParam(params, "QUERY_STRING", query);
    appendParam(params, "REQUEST_METHOD", method);
    appendParam(params, "CONTENT_TYPE", contentType);
    appendParam(params, "CONTENT_LENGTH", contentLength ? std::to_string(contentLength) : "");
    appendParam(params, "SCRIPT_NAME", path.substr(0, split));
    appendParam(params, "PATH_INFO", path.substr(split));
    appendParam(params, "REQUEST_URI", target);
    appendParam(params, "DOCUMENT_URI", path);
    appendParam(params, "DOCUMENT_ROOT", "/usr/share/nginx/html");
    appendParam(params, "SERVER_PROTOCOL", protocol);
}

void appendServer(std::string& params)
{
    appendParam(params, "REQUEST_SCHEME", "http");
    appendParam(params, "GATEWAY_INTERFACE", "CGI/1.1");
    appendParam(params, "SERVER_SOFTWARE", "nginx/1.22.1");
    appendParam(params, "REMOTE_ADDR", "127.0.0.1");
    appendParam(params, "REMOTE_PORT", "50422");
    appendParam(params, "REMOTE_USER", "");
    appendParam(params, "SERVER_ADDR", "127.0.0.1");
    appendParam(params, "SERVER_PORT", "8080");
    appendParam(params, "SERVER_NAME", "localhost");
}

} // namespace

std::string fcgiRecordsOf(const std::string& requestFile, const std::string& scriptFile, bool keep)
{
    const std::string text = contentsOf(requestFile);
    const std::size_t headEnd = text.find("\n\n");
    if (headEnd == std::string::npos) {
        throw std::runtime_error("no empty line in " + requestFile);
    }
    const std::string body = text.substr(headEnd + 2);
    std::istringstream head(text.substr(0, headEnd));
    std::string requestLine;
    std::getline(head, requestLine);
    std::string headers;
    std::string contentType;
    for (std::string line; std::getline(head, line);) {
        const std::size_t colon = std::min(line.find(": "), line.size() - 2);
        const std::string name = line.substr(0, colon);
        const std::string value = line.substr(colon + 2);
        if (name == "Content-Type") {
            contentType = value;
        }
        appendParam(headers, variableName(name), value);
    }
    if (!body.empty()) {
        appendParam(headers, variableName("Content-Length"), std::to_string(body.size()));
    }

    std::string params;
    appendRequestLine(params, requestLine, contentType, body.size());
    appendServer(params);
    if (!scriptFile.empty()) {
        appendParam(params, "SCRIPT_FILENAME", scriptFile);
    }
    std::string records;
    const char begin[8] = {0, 1, static_cast<char>(keep)}; // a responder
    appendRecord(records, BeginRequest, std::string(begin, sizeof begin));
    appendStream(records, Params, params + headers);
    appendStream(records, Stdin, body);
    return records;
}
