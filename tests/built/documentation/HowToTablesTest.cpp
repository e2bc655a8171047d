// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// The tables of the how-to guides say what the library does; here it does it.

#include "DocumentTable.h"
#include "cgi/BwaAbstractCgiInput.h"
#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "json/BwaJson.h"
#include "services/BwaStandardFcgiRequestProcessor.h"
#include "support/QtPrinters.h"
#include "testing/BwaTestRequest.h"

#include <QMap>
#include <QVariant>

#include <gmock/gmock.h>

#include <functional>

namespace {

const char* const formsPage = "howto-forms.md";
const char* const jsonPage = "howto-json.md";

using Reader = std::function<QString(BwaCgiRequest*)>;

// What a hook finds.
QString read(const BwaTestRequest& request, const Reader& reader)
{
    QString found;
    request.sendTo([&found, &reader](BwaFcgiRequest* received) {
        EXPECT_TRUE(received->cgiRequest()->processBodyContent());
        found = reader(received->cgiRequest());
        delete received;
    });
    return found;
}

// The name and the value of the one variable, which have been sent alike.
QString onlyVariable(const QMultiHash<QString, QString>& variables)
{
    EXPECT_EQ(variables.size(), 1);
    EXPECT_EQ(variables.begin().key(), variables.begin().value());
    return variables.begin().value();
}

BwaTestRequest withPart(const QByteArray& header, const QByteArray& content = "x")
{
    BwaTestRequest request("POST", "/");
    request.setBody("multipart/form-data; boundary=b",
                    "--b\r\n" + header + "\r\n\r\n" + content + "\r\n--b--\r\n");
    return request;
}

QString inPath(const QByteArray& sent)
{
    return read(BwaTestRequest("GET", "/" + sent),
                [](BwaCgiRequest* asked) { return asked->environment().pathInfo().mid(1); });
}

QString inQuery(const QByteArray& sent)
{
    return read(BwaTestRequest("GET", "/?" + sent + "=" + sent),
                [](BwaCgiRequest* asked) { return onlyVariable(asked->queryVariables()); });
}

QString inForm(const QByteArray& sent)
{
    BwaTestRequest request("POST", "/");
    request.setBody("application/x-www-form-urlencoded", sent + "=" + sent);
    return read(request, [](BwaCgiRequest* asked) { return onlyVariable(asked->formVariables()); });
}

QString inPartName(const QByteArray& sent)
{
    const QByteArray name = "Content-Disposition: form-data; name=\"" + sent + "\"";
    const QString ofField = read(
        withPart(name), [](BwaCgiRequest* asked) { return asked->formVariables().begin().key(); });
    const QString ofFile = read(withPart(name + "; filename=f"),
                                [](BwaCgiRequest* asked) { return asked->files().begin().key(); });
    EXPECT_EQ(ofField, ofFile);
    return ofField;
}

QString inPartValue(const QByteArray& sent)
{
    return read(withPart("Content-Disposition: form-data; name=a", sent),
                [](BwaCgiRequest* asked) { return asked->formVariables().begin().value(); });
}

BwaCgiFile onlyFile(const BwaCgiRequest* asked)
{
    EXPECT_EQ(asked->files().size(), 1);
    return asked->files().begin().value();
}

QString inFileName(const QByteArray& sent)
{
    return read(withPart("Content-Disposition: form-data; name=a; filename=\"" + sent + "\""),
                [](BwaCgiRequest* asked) { return onlyFile(asked).fileName(); });
}

const char* const fileHeader = "Content-Disposition: form-data; name=a; filename=f";

QString inFileType(const QByteArray& sent)
{
    return read(withPart(fileHeader + ("\r\nContent-Type: " + sent)),
                [](BwaCgiRequest* asked) { return onlyFile(asked).contentType(); });
}

QString inFileContent(const QByteArray& sent)
{
    return read(withPart(fileHeader, sent),
                [](BwaCgiRequest* asked) { return QString::fromUtf8(onlyFile(asked).data()); });
}

QString inCookie(const QByteArray& sent)
{
    BwaTestRequest request("GET", "/");
    request.setHeader("Cookie", sent + "=" + sent);
    return read(request, [](BwaCgiRequest* asked) {
        const BwaHttpCookie cookie = asked->environment().cookies().value(0);
        EXPECT_EQ(cookie.name, cookie.value);
        return cookie.value;
    });
}

QString inHeader(const QByteArray& sent)
{
    BwaTestRequest request("GET", "/");
    request.setHeader("X-Name", sent);
    return read(request, [](BwaCgiRequest* asked) {
        return asked->input()->getenv(QStringLiteral("HTTP_X_NAME"));
    });
}

QString inJson(const QByteArray& sent)
{
    BwaTestRequest request("POST", "/");
    request.setBody("application/json", "{\"" + sent + "\":\"" + sent + "\"}");
    QVariantMap object;
    request.sendTo([&object](BwaFcgiRequest* received) {
        object = BwaStandardFcgiRequestProcessor::parseJsonContent(received).toMap();
        delete received;
    });
    EXPECT_EQ(object.size(), 1);
    EXPECT_EQ(object.firstKey(), object.first().toString());
    return object.firstKey();
}

} // namespace

TEST(HowToTables, SayWhatArrivesHow)
{
    const QMap<QString, QString (*)(const QByteArray&)> places = {
        {QStringLiteral("path"), inPath},
        {QStringLiteral("variable of the query"), inQuery},
        {QStringLiteral("field of a url-encoded form"), inForm},
        {QStringLiteral("name of a multipart field"), inPartName},
        {QStringLiteral("value of a multipart field"), inPartValue},
        {QStringLiteral("name of a file"), inFileName},
        {QStringLiteral("media type of a file"), inFileType},
        {QStringLiteral("content of a file"), inFileContent},
        {QStringLiteral("cookie"), inCookie},
        {QStringLiteral("header"), inHeader},
        {QStringLiteral("JSON"), inJson}};

    const QList<QStringList> rows = tableOf(formsPage, QStringLiteral("Place | "));

    EXPECT_EQ(rows.size(), places.size());
    for (const QStringList& row : rows) {
        ASSERT_TRUE(places.contains(row.at(0))) << row.at(0).toStdString();
        EXPECT_EQ(places[row.at(0)]("a+b%20c"), codeOf(row.at(2))) << row.at(0).toStdString();
        EXPECT_EQ(places[row.at(0)]("\xc3\xa9"), codeOf(row.at(3))) << row.at(0).toStdString();
    }
}

TEST(HowToTables, SayWhatAFileNameLoses)
{
    EXPECT_EQ(inFileName("a+b 100%25.txt"), QStringLiteral("a b 100%.txt"));
}

namespace {

const QByteArray formType = "multipart/form-data; boundary=b";
const QByteArray fieldPart = "--b\r\n"
                             "Content-Disposition: form-data; name=a\r\n"
                             "\r\n"
                             "1\r\n";
const QByteArray filePart = "--b\r\n"
                            "Content-Disposition: form-data; name=f; filename=x\r\n"
                            "\r\n"
                            "2\r\n";
const QByteArray form = fieldPart + filePart + "--b--\r\n";

// A form that has something unusual about it.
struct Form {
    QByteArray body = form;
    QByteArray type = formType;
    QByteArray length = QByteArray::number(form.size());
    unsigned int maxBodySize = 0;
};

Form withBody(const QByteArray& body)
{
    return {body, formType, QByteArray::number(body.size()), 0};
}

Form withType(const QByteArray& type)
{
    return {form, type, QByteArray::number(form.size()), 0};
}

QMap<QString, Form> unusualForms()
{
    return {
        {QStringLiteral("as usual"), Form()},
        {QStringLiteral("ends early"),
         {form.left(60), formType, QByteArray::number(form.size()), 0}},
        {QStringLiteral("is larger than a limit"),
         {form, formType, QByteArray::number(form.size()), 50}},
        {QStringLiteral(
             "has no line end behind its last boundary, as those of undici 5 and node-fetch 3"),
         withBody(form.left(form.size() - 2))},
        {QStringLiteral("has other boundaries than its media type says"),
         withType("multipart/form-data; boundary=c")},
        {QStringLiteral("has a media type without a boundary"), withType("multipart/form-data")},
        {QStringLiteral(
             "has the headers of its parts in lower case, or without a blank behind the colon"),
         withBody(QByteArray(form)
                      .replace("Content-Disposition: form-data; name=a",
                               "content-disposition: form-data; name=a")
                      .replace("Content-Disposition: form-data; name=f",
                               "Content-Disposition:form-data; name=f"))},
        {QStringLiteral("has a second file of the same name"),
         withBody(fieldPart + filePart + QByteArray(filePart).replace("2", "3") + "--b--\r\n")},
        {QStringLiteral(
             "has no CONTENT_LENGTH: a web server without buffering passes on chunks so"),
         {form, formType, QByteArray(), 0}},
        {QStringLiteral("has its media type in upper case: it becomes a raw `body()`"),
         withType("Multipart/Form-Data; boundary=b")},
        {QStringLiteral("has no media type: it is cut at each `;` as a url-encoded one"),
         withType(QByteArray())}};
}

// "true | 1 | 1" and what a file holds.
QString made(const Form& sent)
{
    BwaTestRequest request("POST", "/");
    request.setBody(sent.type, sent.body);
    request.setVariable("CONTENT_LENGTH", sent.length);
    QString row;
    request.sendTo([&](BwaFcgiRequest* received) {
        BwaCgiRequest* const asked = received->cgiRequest();
        BwaRequestLimits limits;
        limits.maxBodySize = sent.maxBodySize;
        asked->setRequestLimits(limits);
        const bool isTaken = asked->processBodyContent();
        row = QStringLiteral("%1 | %2 | %3")
                  .arg(isTaken ? QStringLiteral("true") : QStringLiteral("false"))
                  .arg(asked->formVariables().size())
                  .arg(asked->files().size());
        if (asked->files().value(QStringLiteral("f")).data() == "3") {
            row += QStringLiteral(", the last");
        }
        delete received;
    });
    return row;
}

} // namespace

TEST(HowToTables, SayWhatIsMadeOfAForm)
{
    const QMap<QString, Form> forms = unusualForms();

    const QList<QStringList> rows = tableOf(formsPage, QStringLiteral("The form | "));

    EXPECT_EQ(rows.size(), forms.size());
    for (const QStringList& row : rows) {
        ASSERT_TRUE(forms.contains(row.at(0))) << row.at(0).toStdString();
        EXPECT_EQ(made(forms[row.at(0)]), row.mid(1).join(QStringLiteral(" | ")))
            << row.at(0).toStdString();
    }
}

namespace {

// The texts between backticks of a cell, or those that its words describe.
QList<QByteArray> textsOf(const QString& cell)
{
    const int depth = cell.section(QLatin1Char(' '), 0, 0).toInt();
    if (depth > 0) {
        return {QByteArray(depth, '[') + QByteArray(depth, ']')};
    }
    const bool isMarked = cell.startsWith(QStringLiteral("a byte order mark"));
    QList<QByteArray> texts;
    const QStringList pieces = cell.split(QLatin1Char('`'));
    for (int i = 1; i < pieces.size(); i += 2) {
        texts.append((isMarked ? "\xef\xbb\xbf" : "") + pieces.at(i).toUtf8());
    }
    return texts;
}

void expectVerdict(bool isTaken, const QString& cell)
{
    const QList<QByteArray> texts = textsOf(cell);
    EXPECT_FALSE(texts.isEmpty()) << cell.toStdString();
    for (const QByteArray& text : texts) {
        bool isJson = !isTaken;
        BwaJson::parse(text, &isJson);
        EXPECT_EQ(isJson, isTaken) << text.toStdString();
    }
}

} // namespace

TEST(HowToTables, SayWhichJsonIsRefused)
{
    const QList<QStringList> rows = tableOf(jsonPage, QStringLiteral("Refused | "));

    EXPECT_EQ(rows.size(), 5);
    for (const QStringList& row : rows) {
        expectVerdict(false, row.at(0));
        expectVerdict(true, row.at(1));
    }
}
