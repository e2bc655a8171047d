/* SPDX-FileCopyrightText: The Brindo Web API authors */
/* SPDX-License-Identifier: MIT */

/*
 * The measured requests, answered by libfcgi alone: one thread, one reply buffer, and no more
 * parsing than these very requests need. What a framework costs is what it costs beyond this.
 */

#define _GNU_SOURCE

#include <fcgiapp.h>

#include <signal.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static const char jsonHeader[] = "Content-Type: application/json\n\n";

static const char* variable(const FCGX_Request* request, const char* name)
{
    const char* const value = FCGX_GetParam(name, request->envp);
    return value ? value : "";
}

/* The body with a zero behind it, to be freed; null when it is incomplete. */
static char* readBody(const FCGX_Request* request, int* length)
{
    *length = (int)strtol(variable(request, "CONTENT_LENGTH"), NULL, 10);
    char* const body = malloc((size_t)*length + 1);
    if (!body || FCGX_GetStr(body, *length, request->in) != *length) {
        free(body);
        return NULL;
    }
    body[*length] = '\0';
    return body;
}

static void sendBadRequest(const FCGX_Request* request)
{
    FCGX_PutS("Status: 400 Bad Request\n\n", request->out);
}

static int hexDigitValue(char digit)
{
    if (digit >= '0' && digit <= '9') {
        return digit - '0';
    }
    digit |= 0x20;
    return digit >= 'a' && digit <= 'f' ? digit - 'a' + 10 : -1;
}

/* Decodes in place up to a delimiter and returns the delimiter's place. */
static char* decodeUntil(char* text, const char* delimiters)
{
    char* const end = text + strcspn(text, delimiters);
    char* out = text;
    for (const char* in = text; in < end; ++in) {
        const int high = *in == '%' && in + 2 < end ? hexDigitValue(in[1]) : -1;
        const int low = high >= 0 ? hexDigitValue(in[2]) : -1;
        if (low >= 0) {
            *out++ = (char)(16 * high + low);
            in += 2;
        } else {
            *out++ = *in == '+' ? ' ' : *in;
        }
    }
    if (out < end) {
        *out = '\0';
    }
    return end;
}

/* The value of a name in "name=value" pairs; null when there is none. */
static const char* findPair(const char* pairs, const char* name, char separator, int* length)
{
    const size_t nameLength = strlen(name);
    for (const char* pair = pairs; pair; pair = strchr(pair, separator)) {
        pair += strspn(pair, "&; ");
        if (strncmp(pair, name, nameLength) == 0 && pair[nameLength] == '=') {
            const char* const value = pair + nameLength + 1;
            *length = (int)(strchrnul(value, separator) - value);
            return value;
        }
    }
    *length = 0;
    return NULL;
}

static void sendHello(const FCGX_Request* request)
{
    int length = 0;
    const char* const value = findPair(variable(request, "QUERY_STRING"), "name", '&', &length);
    char name[256] = "";
    if (value && length < (int)sizeof name) {
        memcpy(name, value, (size_t)length);
        name[length] = '\0';
        decodeUntil(name, "");
    }
    const char* const theme = findPair(variable(request, "HTTP_COOKIE"), "theme", ';', &length);
    FCGX_FPrintF(request->out, "%s{\"hello\":\"%s\",\"theme\":\"%.*s\"}\n", jsonHeader, name,
                 length, theme ? theme : "");
}

struct Order {
    unsigned long id;
    long account;
    unsigned long quantity;
    double price;
    bool express;
    const char* customer;
    const char* address;
    const char* note;
};

/* A string without escapes, cut out in place; null when it is none. Moves the text behind it. */
static char* takeString(char** text)
{
    char* const begin = *text + 1;
    char* const end = **text == '"' ? strchr(begin, '"') : NULL;
    if (!end) {
        return NULL;
    }
    *end = '\0';
    *text = end + 1;
    return begin;
}

/* Takes one member's value; returns its bit, or 0 when it is wrong. */
static unsigned takeMember(struct Order* order, const char* name, char** text)
{
    if (strcmp(name, "id") == 0) {
        order->id = strtoul(*text, text, 10);
        return 1;
    }
    if (strcmp(name, "account") == 0) {
        order->account = strtol(*text, text, 10);
        return 2;
    }
    if (strcmp(name, "quantity") == 0) {
        order->quantity = strtoul(*text, text, 10);
        return order->quantity <= 65535 ? 4 : 0;
    }
    if (strcmp(name, "price") == 0) {
        order->price = strtod(*text, text);
        return 8;
    }
    if (strcmp(name, "express") == 0) {
        order->express = strncmp(*text, "true", 4) == 0;
        *text += order->express ? 4 : 5;
        return 16;
    }
    if (strcmp(name, "customer") == 0) {
        return (order->customer = takeString(text)) ? 32 : 0;
    }
    if (strcmp(name, "address") == 0) {
        return (order->address = takeString(text)) ? 64 : 0;
    }
    return strcmp(name, "note") == 0 && (order->note = takeString(text)) ? 128 : 0;
}

/* Flat objects, written without blanks. */
static bool parseOrder(char* text, struct Order* order)
{
    unsigned seen = 0;
    while (*text == '{' || *text == ',') {
        ++text;
        const char* const name = takeString(&text);
        if (!name || *text++ != ':') {
            return false;
        }
        const unsigned member = takeMember(order, name, &text);
        if (member == 0) {
            return false;
        }
        seen |= member;
    }
    return *text == '}' && seen == 255;
}

static void sendOrder(const FCGX_Request* request)
{
    int length = 0;
    char* const body = readBody(request, &length);
    struct Order order = {0};
    if (body && strcmp(variable(request, "CONTENT_TYPE"), "application/json") == 0 &&
        parseOrder(body, &order)) {
        FCGX_FPrintF(request->out,
                     "%s{\"id\":%lu,\"account\":%ld,\"quantity\":%lu,\"price\":%g,\"express\":%s,"
                     "\"customer\":\"%s\",\"address\":\"%s\",\"note\":\"%s\"}\n",
                     jsonHeader, order.id, order.account, order.quantity, order.price,
                     order.express ? "true" : "false", order.customer, order.address, order.note);
    } else {
        sendBadRequest(request);
    }
    free(body);
}

static void sendFieldCount(const FCGX_Request* request)
{
    int length = 0;
    char* const body = readBody(request, &length);
    if (!body) {
        sendBadRequest(request);
        return;
    }
    int fields = 0;
    for (char* field = body; field; ++fields) {
        char* end = decodeUntil(field, "=&;");
        if (*end == '=') {
            end = decodeUntil(end + 1, "&;");
        }
        field = *end ? end + 1 : NULL;
    }
    FCGX_FPrintF(request->out, "%s{\"fields\":%d}\n", jsonHeader, fields);
    free(body);
}

/* The size of the only file of a multipart body; -1 when there is none. */
static long fileSize(const FCGX_Request* request, const char* body, int length)
{
    const char* const boundary = strstr(variable(request, "CONTENT_TYPE"), "boundary=");
    const char* const headerEnd = memmem(body, (size_t)length, "\r\n\r\n", 4);
    if (!boundary || !headerEnd) {
        return -1;
    }
    char delimiter[128] = "";
    const int size = snprintf(delimiter, sizeof delimiter, "\r\n--%s--\r\n", boundary + 9);
    const char* const content = headerEnd + 4;
    const char* const contentEnd =
        memmem(content, (size_t)(body + length - content), delimiter, (size_t)size);
    return contentEnd ? contentEnd - content : -1;
}

static void sendFileSize(const FCGX_Request* request)
{
    int length = 0;
    char* const body = readBody(request, &length);
    const long size = body ? fileSize(request, body, length) : -1;
    if (size >= 0) {
        FCGX_FPrintF(request->out, "%s{\"size\":%ld}\n", jsonHeader, size);
    } else {
        sendBadRequest(request);
    }
    free(body);
}

static void sendProfile(const FCGX_Request* request)
{
    static const char scheme[] = "SESSION-TOKEN ";
    static const char session[] = "{6f1c8f0e-52a4-4f0f-9d53-0d1f5b7c9a21}";
    static const char token[] = "{c2b8a7d4-3e19-4c6b-8f70-a5e4d3c2b190}";
    const char* const authorization = variable(request, "HTTP_AUTHORIZATION");
    const char* const id = authorization + sizeof scheme - 1;
    if (strncmp(authorization, scheme, sizeof scheme - 1) == 0 &&
        strncmp(id, session, sizeof session - 1) == 0 && id[sizeof session - 1] == ':' &&
        strcmp(id + sizeof session, token) == 0) {
        FCGX_FPrintF(request->out, "%s{\"user\":\"%s\"}\n", jsonHeader, "ada");
    } else {
        FCGX_PutS("Status: 401 Unauthorized\n\n", request->out);
    }
}

static void sendNotFound(const FCGX_Request* request)
{
    FCGX_FPrintF(request->err,
                 "Error in dispatcher service \"\" for script \"%s\": Cannot find a child service "
                 "to handle a request with path info \"%s\"",
                 variable(request, "SCRIPT_NAME"), variable(request, "PATH_INFO"));
    FCGX_PutS("Status: 404 Not Found\n"
              "\n"
              "<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01//EN\" "
              "\"http://www.w3.org/TR/html4/strict.dtd\">\n"
              "<html>\n"
              "<head>\n"
              "<title>404 - Not Found</title>\n"
              "</head>\n"
              "<body>\n"
              "<h1>404 - Not Found</h1>\n"
              "</body>\n"
              "</html>",
              request->out);
}

static void answer(const FCGX_Request* request)
{
    const char* const path = variable(request, "PATH_INFO");
    const bool isPost = strcmp(variable(request, "REQUEST_METHOD"), "POST") == 0;
    if (!isPost && strcmp(path, "/hello") == 0) {
        sendHello(request);
    } else if (isPost && strcmp(path, "/json") == 0) {
        sendOrder(request);
    } else if (isPost && strcmp(path, "/form") == 0) {
        sendFieldCount(request);
    } else if (isPost && strcmp(path, "/upload") == 0) {
        sendFileSize(request);
    } else if (!isPost && strcmp(path, "/v1/users/profile") == 0) {
        sendProfile(request);
    } else {
        sendNotFound(request);
    }
}

int main(int argc, char** argv)
{
    if (argc != 2) {
        fprintf(stderr, "usage: %s SOCKET\n", argv[0]);
        return 2;
    }
    FCGX_Init();
    signal(SIGTERM, SIG_DFL);
    FCGX_Request request;
    FCGX_InitRequest(&request, FCGX_OpenSocket(argv[1], 4096), 0);
    while (FCGX_Accept_r(&request) == 0) {
        answer(&request);
        FCGX_Finish_r(&request);
    }
    return 1;
}
