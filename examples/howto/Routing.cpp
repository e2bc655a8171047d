// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "BwaStringStreaming.h"
#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttpPlainTextHeader.h"
#include "services/BwaDispatcherFcgiService.h"
#include "services/BwaStandardFcgiRequestProcessor.h"
#include "services/BwaStandardFcgiService.h"
#include "services/BwaStandardProcessableDispatcherFcgiService.h"
#include "testing/BwaTestRequest.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

// Answers with a fixed word, so that the tests see which processor has answered.
class Word : public BwaStandardFcgiRequestProcessor
{
public:
    explicit Word(const QString& word)
        : BwaStandardFcgiRequestProcessor(nullptr)
        , m_word(word)
    {
    }

protected:
    void processGetMethod(BwaFcgiRequest* request) override
    {
        request->out() << BwaHttpPlainTextHeader() << m_word;
        delete request;
    }

private:
    QString m_word;
};

BwaStandardFcgiService* service(const char* word)
{
    return new BwaStandardFcgiService(new Word(QString::fromLatin1(word)));
}

//! [tree]
// /status, /shop/articles, and /shop, which is a dispatcher that answers for itself, too
void fill(BwaDispatcherFcgiService& root)
{
    root.addService(QStringLiteral("status"), service("status"));
    auto* shop =
        new BwaStandardProcessableDispatcherFcgiService(new Word(QStringLiteral("the shop")));
    root.addService(QStringLiteral("shop"), shop);
    shop->addService(QStringLiteral("articles"), service("articles"));
    root.addDispatcherService(QStringLiteral("admin")); // has no answer of its own: 403
}
//! [tree]

//! [id]
// Answers for the article of one id.
class ArticleProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    explicit ArticleProcessor(uint id)
        : BwaStandardFcgiRequestProcessor(nullptr)
        , m_id(id)
    {
    }

protected:
    void processGetMethod(BwaFcgiRequest* request) override
    {
        request->out() << BwaHttpPlainTextHeader() << "article " << QString::number(m_id);
        delete request;
    }

private:
    uint m_id;
};

// Answers /articles/ID for every number, without a service for each.
class Articles : public BwaDispatcherFcgiService
{
public:
    void processRequest(BwaFcgiRequest* request) override
    {
        const QString path = request->cgiRequest()->environment().pathInfo();
        const QString name = path.mid(servicePath().size() + 1);
        const uint id = name.toUInt(); // accepts "+12", "012" and " 12", too: so compare
        if (QString::number(id) == name) {
            ArticleProcessor(id).processRequest(request);
        } else {
            request->sendHttpError(BwaFcgiRequest::NotFound);
            delete request;
        }
    }
};
//! [id]

BwaTestReply replyOf(BwaAbstractFcgiService& service, const QByteArray& path)
{
    return BwaTestRequest("GET", path).sendTo(service);
}

} // namespace

TEST(HowToRoute, GivenATreeEachPathHasItsService)
{
    BwaDispatcherFcgiService root;
    fill(root);

    EXPECT_EQ(replyOf(root, "/status").body, "status");
    EXPECT_EQ(replyOf(root, "/shop").body, "the shop");
    EXPECT_EQ(replyOf(root, "/shop/articles").body, "articles");
    EXPECT_EQ(replyOf(root, "/admin").statusCode, 403);
    EXPECT_EQ(replyOf(root, "/shop/other").statusCode, 404);
    EXPECT_EQ(replyOf(root, "/status/more").statusCode, 404);
}

TEST(HowToRoute, GivenAnIdInThePathReadsIt)
{
    BwaDispatcherFcgiService root;
    root.addService(QStringLiteral("articles"), new Articles);

    EXPECT_EQ(replyOf(root, "/articles/12").body, "article 12");
    EXPECT_EQ(replyOf(root, "/articles/4294967295").body, "article 4294967295");
    for (const char* path :
         {"/articles", "/articles/", "/articles/twelve", "/articles/+12", "/articles/012",
          "/articles/%2012", "/articles/12/", "/articles/-0", "/articles/4294967296"}) {
        EXPECT_EQ(replyOf(root, path).statusCode, 404) << path;
    }
}

TEST(HowToRoute, GivenAnIdTakesOnlyTheMethodsOfItsHooks)
{
    BwaDispatcherFcgiService root;
    root.addService(QStringLiteral("articles"), new Articles);

    EXPECT_EQ(BwaTestRequest("DELETE", "/articles/12").sendTo(root).statusCode, 405);
}

TEST(HowToRoute, WhenAServiceIsRemovedItsPathIsGone)
{
    BwaDispatcherFcgiService root;
    fill(root);

    //! [remove]
    const std::unique_ptr<BwaAbstractFcgiService> status(
        root.removeService(QStringLiteral("status")));
    //! [remove]

    EXPECT_NE(status, nullptr);
    EXPECT_EQ(replyOf(root, "/status").statusCode, 404);
}

TEST(HowToRoute, GivenTwoScriptNamesEachHasItsRoot)
{
    BwaDispatcherFcgiService root;
    BwaDispatcherFcgiService files;
    fill(root);
    BwaTestRequest request("GET", "/status");

    //! [roots]
    const QMap<QString, BwaAbstractFcgiService*> services = {{QStringLiteral("/api"), &root},
                                                             {QStringLiteral("/files"), &files}};
    //! [roots]

    request.setVariable("SCRIPT_NAME", "/api");
    EXPECT_EQ(request.sendThrough(services).body, "status");
    request.setVariable("SCRIPT_NAME", "/files");
    EXPECT_EQ(request.sendThrough(services).statusCode, 404);
}
