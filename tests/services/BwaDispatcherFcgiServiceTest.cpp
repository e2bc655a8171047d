// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "services/BwaDispatcherFcgiService.h"

#include "BwaStringStreaming.h"
#include "fcgi/BwaFcgiRequest.h"
#include "support/Application.h"
#include "support/ErrorPage.h"
#include "support/FunctionService.h"
#include "support/LabelledServices.h"
#include "support/MessageRecorder.h"
#include "support/QtPrinters.h"
#include "support/ServiceReplies.h"
#include "support/ServiceTree.h"

#include <QEvent>
#include <QMetaMethod>
#include <QPointer>

#include <gmock/gmock.h>

#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;

const QString a = QStringLiteral("a");
const QString b = QStringLiteral("b");

// Does what the event loop does with objects whose deletion was deferred. Qt delivers nothing
// without an application.
void deleteDeferred()
{
    const Application application;
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QByteArray childNotFound(const QByteArray& servicePath, const QByteArray& pathInfo)
{
    return "Error in dispatcher service \"" + servicePath +
        "\" for script \"/app\": Cannot find a child service to handle a request with path info "
        "\"" +
        pathInfo + "\"";
}

void expectNotFound(const BwaTestReply& reply, const QByteArray& log)
{
    EXPECT_EQ(reply.raw, errorPage(404, "Not Found"));
    EXPECT_EQ(reply.errorText, log);
}

// Throws a standard exception with its text, after some output and with the request alive.
class ThrowingService : public BwaAbstractFcgiService
{
public:
    explicit ThrowingService(const std::string& text, const char* output = "")
        : m_text(text)
        , m_output(output)
    {
    }

    void processRequest(BwaFcgiRequest* request) override
    {
        request->out() << m_output;
        throw std::runtime_error(m_text);
    }

private:
    std::string m_text;
    const char* m_output;
};

class ThrowingDispatcher : public BwaDispatcherFcgiService
{
public:
    void processThisService(BwaFcgiRequest*) override { throw std::logic_error("itself"); }
};

void answerAndThrow(BwaFcgiRequest* request)
{
    request->out() << "all";
    delete request;
    throw std::runtime_error("too late");
}

const char* const tooLate = "An exception occurs while processing a FastCGI request: too late";

struct NotStandard {
};

class NonStandardThrowingService : public BwaAbstractFcgiService
{
public:
    void processRequest(BwaFcgiRequest*) override { throw NotStandard(); }
};

} // namespace

TEST(BwaDispatcherFcgiService, HasNoParents)
{
    const BwaDispatcherFcgiService dispatcher;

    EXPECT_EQ(dispatcher.parentService(), nullptr);
    EXPECT_EQ(dispatcher.parent(), nullptr);
}

TEST(BwaDispatcherFcgiService, DeclaresOnlyItsPrivateSlot)
{
    const QMetaObject& metaObject = BwaDispatcherFcgiService::staticMetaObject;

    ASSERT_EQ(metaObject.methodCount(), metaObject.methodOffset() + 1);
    const QMetaMethod slot = metaObject.method(metaObject.methodOffset());
    EXPECT_EQ(slot.methodSignature(), "serviceDestroyed(QString)");
    EXPECT_EQ(slot.methodType(), QMetaMethod::Slot);
    EXPECT_EQ(slot.access(), QMetaMethod::Private);
    EXPECT_EQ(metaObject.propertyCount(), metaObject.propertyOffset());
}

// Routing

namespace {

struct RouteCase {
    std::string name;
    std::vector<TreeNode> children; // of the root dispatcher, whose label is "root"
    QByteArray pathInfo;
    QByteArray label; // of the service that answers
};

void PrintTo(const RouteCase& routeCase, std::ostream* stream)
{
    *stream << routeCase.pathInfo.constData();
}

class Route : public testing::TestWithParam<RouteCase>
{
};

struct NoRouteCase {
    std::string name;
    std::vector<TreeNode> children; // of the root dispatcher
    QByteArray pathInfo;
    QByteArray servicePath; // of the dispatcher that refuses
};

void PrintTo(const NoRouteCase& noRouteCase, std::ostream* stream)
{
    *stream << noRouteCase.pathInfo.constData();
}

class NoRoute : public testing::TestWithParam<NoRouteCase>
{
};

const auto nameOf = [](const auto& info) { return info.param.name; };

} // namespace

TEST_P(Route, LeadsTo)
{
    LabelledDispatcher root("root");
    addChildren(&root, "root", GetParam().children);

    const BwaTestReply reply = replyOf(root, requestTo(GetParam().pathInfo));

    EXPECT_EQ(reply.raw, GetParam().label);
    EXPECT_EQ(reply.errorText, "");
}

INSTANTIATE_TEST_SUITE_P(
    Itself, Route,
    testing::Values(
        RouteCase{"EmptyPath", {}, "", "root"}, RouteCase{"Slash", {}, "/", "root"},
        RouteCase{"EmptyNamedChildIsNotAsked", {service("")}, "/", "root"},
        RouteCase{"ChildByName", {dispatcher("orders")}, "/orders", "root>orders"},
        RouteCase{"ChildWithSlashAtEnd", {dispatcher("orders")}, "/orders/", "root>orders"},
        RouteCase{"Grandchild", {dispatcher("a", {dispatcher("b")})}, "/a/b", "root>a>b"},
        RouteCase{
            "GrandchildWithSlash", {dispatcher("a", {dispatcher("b")})}, "/a/b/", "root>a>b"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    ExactName, Route,
    testing::Values(RouteCase{"Service", {service("users")}, "/users", "root>users"},
                    RouteCase{"ServiceBelow",
                              {dispatcher("api", {service("users")})},
                              "/api/users",
                              "root>api>users"},
                    RouteCase{"NameWithSlash", {service("a/b")}, "/a/b", "root>a/b"},
                    RouteCase{"NameWithTwoSlashes", {service("a/b/c")}, "/a/b/c", "root>a/b/c"},
                    RouteCase{"NameWithSlashAtEnd",
                              {service("users"), service("users/")},
                              "/users/",
                              "root>users/"},
                    RouteCase{"NameIsSlash", {service("/")}, "//", "root>/"},
                    RouteCase{"BeforePrefix",
                              {dispatcher("orders", {service("open")}), service("orders/open")},
                              "/orders/open",
                              "root>orders/open"},
                    RouteCase{"DispatcherBeforePrefix",
                              {dispatcher("orders", {service("open")}), dispatcher("orders/open")},
                              "/orders/open",
                              "root>orders/open"},
                    RouteCase{"BeforePrefixBelow",
                              {dispatcher("x", {dispatcher("a", {service("b")}), service("a/b")})},
                              "/x/a/b",
                              "root>x>a/b"},
                    RouteCase{"Blank", {service("a b ")}, "/a b ", "root>a b "},
                    RouteCase{"DotsAreNames", {service("..")}, "/..", "root>.."},
                    RouteCase{"BeyondAscii", {service("caf\xe9")}, "/caf\xe9", "root>caf\xe9"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Prefix, Route,
    testing::Values(
        RouteCase{"FirstOfTwoInKeyOrder",
                  {dispatcher("a/b", {service("c")}), dispatcher("a", {service("b/c")})},
                  "/a/b/c",
                  "root>a>b/c"},
        RouteCase{"OfDispatcherNotOfService",
                  {service("a"), dispatcher("a/b", {service("c")})},
                  "/a/b/c",
                  "root>a/b>c"},
        RouteCase{"WhenExactNameIsShorter",
                  {dispatcher("orders", {service("open/x")}), service("orders/open")},
                  "/orders/open/x",
                  "root>orders>open/x"},
        RouteCase{"NameEndsInSlash", {dispatcher("a/", {service("x")})}, "/a//x", "root>a/>x"},
        RouteCase{"EmptyName", {dispatcher("", {service("x")})}, "//x", "root>>x"},
        RouteCase{"EmptyNameItself", {dispatcher("")}, "//", "root>"},
        RouteCase{"FourLevels",
                  {dispatcher("a", {dispatcher("b", {dispatcher("c", {service("d")})})})},
                  "/a/b/c/d",
                  "root>a>b>c>d"}),
    nameOf);

TEST_P(NoRoute, IsNotFound)
{
    LabelledDispatcher root("root");
    addChildren(&root, "root", GetParam().children);

    const BwaTestReply reply = replyOf(root, requestTo(GetParam().pathInfo));

    expectNotFound(reply, childNotFound(GetParam().servicePath, GetParam().pathInfo));
}

INSTANTIATE_TEST_SUITE_P(
    Root, NoRoute,
    testing::Values(
        NoRouteCase{"UnknownName", {service("users")}, "/orders", ""},
        NoRouteCase{"NoChildren", {}, "/users", ""}, NoRouteCase{"TwoSlashes", {}, "//", ""},
        NoRouteCase{"NoLeadingSlash", {service("users"), dispatcher("orders")}, "orders", ""},
        NoRouteCase{"NoLeadingSlashBelow", {dispatcher("a", {service("b")})}, "a/b", ""},
        NoRouteCase{"OtherCase", {service("users"), dispatcher("orders")}, "/Orders/", ""},
        NoRouteCase{"NameIsLonger", {dispatcher("orders")}, "/order", ""},
        NoRouteCase{"NameIsShorter", {dispatcher("orders")}, "/ordersx/open", ""},
        NoRouteCase{"BlankAtEnd", {service("users")}, "/users ", ""},
        NoRouteCase{"DotsAreNotFollowed", {service("users")}, "/x/../users", ""},
        NoRouteCase{"ServiceWithSlashAtEnd", {service("users")}, "/users/", ""},
        NoRouteCase{"BelowService", {service("users")}, "/users/3", ""},
        NoRouteCase{"BelowEmptyNamedService", {service("")}, "//x", ""}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Below, NoRoute,
    testing::Values(NoRouteCase{"UnknownName", {dispatcher("a", {service("b")})}, "/a/c", "/a"},
                    NoRouteCase{"TwoSlashesAtEnd", {dispatcher("a")}, "/a//", "/a"},
                    NoRouteCase{"FirstInKeyOrderIsFinal",
                                {dispatcher("a"), dispatcher("a/b", {service("c")})},
                                "/a/b/c",
                                "/a"},
                    NoRouteCase{"ExactNameIsNoPrefix",
                                {dispatcher("orders"), service("orders/open")},
                                "/orders/open/x",
                                "/orders"},
                    NoRouteCase{"NameOfRootChild", {dispatcher("a"), service("b")}, "/a/b", "/a"},
                    NoRouteCase{
                        "TwoLevels", {dispatcher("a", {dispatcher("b")})}, "/a/b/c", "/a/b"},
                    NoRouteCase{"EmptyNamed", {dispatcher("")}, "//x", "/"}),
    nameOf);

TEST(ProcessRequest, GivenPlainDispatcherItselfIsForbidden)
{
    BwaDispatcherFcgiService root;

    const BwaTestReply reply = replyOf(root, requestTo("/"));

    EXPECT_EQ(reply.raw, errorPage(403, "Forbidden"));
    EXPECT_EQ(reply.errorText, "");
}

TEST(ProcessRequest, GivenPlainDispatcherBelowIsForbidden)
{
    BwaDispatcherFcgiService root;
    root.addDispatcherService(QStringLiteral("orders"));

    const BwaTestReply reply = replyOf(root, requestTo("/orders/"));

    EXPECT_EQ(reply.raw, errorPage(403, "Forbidden"));
    EXPECT_EQ(reply.errorText, "");
}

TEST(ProcessRequest, GivenNoPathInfoAnswersItself)
{
    LabelledDispatcher root("root");

    EXPECT_EQ(replyOf(root, {{"SCRIPT_NAME", "/app"}}).raw, "root");
}

TEST(ProcessRequest, GivenPathOfSiblingIsNotFound)
{
    BwaDispatcherFcgiService root;
    BwaDispatcherFcgiService* child = root.addDispatcherService(a);
    child->addService(b, new LabelledService("below"));

    expectNotFound(replyOf(*child, requestTo("/b")), childNotFound("/a", "/b"));
    expectNotFound(replyOf(*child, requestTo("/")), childNotFound("/a", "/"));
    expectNotFound(replyOf(*child, requestTo("/ab")), childNotFound("/a", "/ab"));
}

TEST(ProcessRequest, WhenNamesHoldMarkersLogsThemAsTheyAre)
{
    BwaDispatcherFcgiService root;
    root.addDispatcherService(QStringLiteral("%3%2"));

    const BwaTestReply reply =
        replyOf(root, {{"SCRIPT_NAME", "/%1%3%L2"}, {"PATH_INFO", "/%3%2/%1%2%99"}});

    expectNotFound(reply,
                   "Error in dispatcher service \"/%3%2\" for script \"/%1%3%L2\": Cannot find a "
                   "child service to handle a request with path info \"/%3%2/%1%2%99\"");
}

TEST(ProcessRequest, WhenNamesAreBeyondAsciiLogsLatin1)
{
    BwaDispatcherFcgiService root;
    BwaDispatcherFcgiService* child =
        root.addDispatcherService(QString::fromUtf8("\xe2\x82\xac\xc3\xa9"));

    const BwaTestReply reply =
        replyOf(*child, {{"SCRIPT_NAME", "/\xff"}, {"PATH_INFO", "/\xc3\xa9"}});

    expectNotFound(reply,
                   "Error in dispatcher service \"/?\xe9\" for script \"/\xff\": Cannot find a "
                   "child service to handle a request with path info \"/\xc3\xa9\"");
}

// Exceptions

TEST(ProcessRequest, WhenChildThrowsAnswersInternalServerError)
{
    BwaDispatcherFcgiService root;
    root.addService(a, new ThrowingService("no more notes"));

    const BwaTestReply reply = replyOf(root, requestTo("/a"));

    EXPECT_EQ(reply.raw, errorPage(500, "Internal Server Error"));
    EXPECT_EQ(reply.errorText,
              "Error in dispatcher service \"\" for script \"/app\" while handling request with "
              "path info \"/a\": no more notes");
}

TEST(ProcessRequest, WhenChildOfChildThrowsOnlyItsDispatcherAnswers)
{
    BwaDispatcherFcgiService root;
    root.addDispatcherService(a)->addService(b, new ThrowingService("below"));

    const BwaTestReply reply = replyOf(root, requestTo("/a/b"));

    EXPECT_EQ(reply.raw, errorPage(500, "Internal Server Error"));
    EXPECT_EQ(reply.errorText,
              "Error in dispatcher service \"/a\" for script \"/app\" while handling request with "
              "path info \"/a/b\": below");
}

TEST(ProcessRequest, WhenItsOwnProcessingThrowsAnswersInternalServerError)
{
    ThrowingDispatcher root;

    const BwaTestReply reply = replyOf(root, requestTo(""));

    EXPECT_EQ(reply.raw, errorPage(500, "Internal Server Error"));
    EXPECT_EQ(reply.errorText,
              "Error in dispatcher service \"\" for script \"/app\" while handling request with "
              "path info \"\": itself");
}

TEST(ProcessRequest, WhenChildThrowsAfterOutputKeepsTheOutput)
{
    BwaDispatcherFcgiService root;
    root.addService(a, new ThrowingService("late", "Status: 200 OK\n\npart"));

    EXPECT_EQ(replyOf(root, requestTo("/a")).raw,
              "Status: 200 OK\n\npart" + errorPage(500, "Internal Server Error"));
}

TEST(ProcessRequest, WhenChildThrowsTooLateIsLoggedOnly)
{
    const MessageRecorder messages;
    BwaDispatcherFcgiService root;
    root.addService(a, new FunctionService(answerAndThrow));

    const BwaTestReply reply = replyOf(root, requestTo("/a"));

    EXPECT_EQ(reply.raw, "all");
    EXPECT_EQ(reply.errorText, "");
    EXPECT_THAT(messages.debugTexts(), ElementsAre(tooLate));
}

TEST(ProcessRequest, WhenOneWithinTheOtherThrowsTooLateEachIsLoggedOnly)
{
    const MessageRecorder messages;
    BwaDispatcherFcgiService inner;
    inner.addService(a, new FunctionService(answerAndThrow));
    BwaDispatcherFcgiService outer;
    outer.addService(a, new FunctionService([&](BwaFcgiRequest* request) {
                         inner.processRequest(request);
                         throw std::runtime_error("too late");
                     }));

    EXPECT_EQ(replyOf(outer, requestTo("/a")).raw, "all");

    EXPECT_THAT(messages.debugTexts(), ElementsAre(tooLate, tooLate));
}

TEST(ProcessRequest, WhenOneThrowsTooLateAfterTheOtherHasReturnedIsLoggedOnly)
{
    const MessageRecorder messages;
    BwaDispatcherFcgiService inner;
    inner.addService(a, new FunctionService([](BwaFcgiRequest*) {})); // answered later
    BwaDispatcherFcgiService outer;
    outer.addService(a, new FunctionService([&](BwaFcgiRequest* request) {
                         inner.processRequest(request);
                         answerAndThrow(request);
                     }));

    EXPECT_EQ(replyOf(outer, requestTo("/a")).raw, "all");

    EXPECT_THAT(messages.debugTexts(), ElementsAre(tooLate));
}

TEST(ProcessRequest, WhenChildThrowsAnswersTheNextRequest)
{
    BwaDispatcherFcgiService root;
    root.addService(a, new ThrowingService("once"));
    root.addService(b, new LabelledService("b"));
    replyOf(root, requestTo("/a"));

    EXPECT_EQ(replyOf(root, requestTo("/b")).raw, "b");
}

TEST(ProcessRequest, WhenChildThrowsNoStandardExceptionLetsItPassWithTheRequestAlive)
{
    BwaDispatcherFcgiService root;
    root.addService(a, new NonStandardThrowingService);

    const BwaTestReply reply = replyWhile(
        [&](BwaFcgiRequest* request) { EXPECT_THROW(root.processRequest(request), NotStandard); },
        requestTo("/a"));

    EXPECT_EQ(reply.raw, "");
    EXPECT_EQ(reply.errorText, "");
}

namespace {

struct TextCase {
    std::string name;
    std::string text;
    QByteArray logged;
};

void PrintTo(const TextCase& textCase, std::ostream* stream)
{
    *stream << textCase.name;
}

class ExceptionText : public testing::TestWithParam<TextCase>
{
};

} // namespace

TEST_P(ExceptionText, IsLoggedAsTheBytesItHolds)
{
    BwaDispatcherFcgiService root;
    root.addService(QStringLiteral("%4"), new ThrowingService(GetParam().text));

    const BwaTestReply reply = replyOf(root, {{"SCRIPT_NAME", "/%4"}, {"PATH_INFO", "/%4"}});

    EXPECT_EQ(reply.errorText,
              "Error in dispatcher service \"\" for script \"/%4\" while handling request with "
              "path info \"/%4\": " +
                  GetParam().logged);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ExceptionText,
    testing::Values(TextCase{"Empty", "", ""}, TextCase{"Markers", "%1 %2 %3 %4", "%1 %2 %3 %4"},
                    TextCase{"Latin1", "\xe9\x80\xff", "\xe9\x80\xff"},
                    TextCase{"Utf8", "\xe2\x82\xac", "\xe2\x82\xac"},
                    TextCase{"LineEnd", "one\ntwo\n", "one\ntwo\n"},
                    TextCase{"Long", std::string(5000, 'x'), QByteArray(5000, 'x')}),
    nameOf);

// Children

TEST(AddService, RoutesToTheService)
{
    BwaDispatcherFcgiService root;

    root.addService(a, new LabelledService("a"));

    EXPECT_EQ(replyOf(root, requestTo("/a")).raw, "a");
}

TEST(AddService, GivenUsedNameRoutesToTheNewService)
{
    BwaDispatcherFcgiService root;
    root.addService(a, new LabelledService("old"));

    root.addService(a, new LabelledService("new"));

    EXPECT_EQ(replyOf(root, requestTo("/a")).raw, "new");
    deleteDeferred();
    EXPECT_EQ(replyOf(root, requestTo("/a")).raw, "new");
}

TEST(AddService, GivenUsedNameReleasesTheOldServiceAndDeletesItLater)
{
    BwaDispatcherFcgiService root;
    auto* service = new LabelledService("old");
    const QPointer<LabelledService> old(service);
    root.addService(a, service);

    root.addService(a, new LabelledService("new"));

    ASSERT_FALSE(old.isNull());
    EXPECT_EQ(old->parentService(), nullptr);
    EXPECT_EQ(old->parent(), nullptr);
    deleteDeferred();
    EXPECT_TRUE(old.isNull());
}

TEST(AddService, GivenTheSameServiceAgainDeletesItLaterAndForgetsIt)
{
    BwaDispatcherFcgiService root;
    auto* service = new LabelledService("a");
    const QPointer<LabelledService> watched(service);
    root.addService(a, service);

    root.addService(a, service);

    EXPECT_EQ(service->parentService(), &root);
    EXPECT_EQ(replyOf(root, requestTo("/a")).raw, "a");
    deleteDeferred();
    EXPECT_TRUE(watched.isNull());
    expectNotFound(replyOf(root, requestTo("/a")), childNotFound("", "/a"));
}

// Settled: adopting a service takes it away from the dispatcher that holds it, even from the same
// one, and with every name.
TEST(AddService, GivenTheSameServiceUnderSecondNameLosesBothNames)
{
    BwaDispatcherFcgiService root;
    auto* service = new LabelledService("service");
    root.addService(a, service);

    root.addService(b, service);

    EXPECT_TRUE(root.childServiceName(service).isNull());
    EXPECT_EQ(service->parentService(), &root);
    expectNotFound(replyOf(root, requestTo("/a")), childNotFound("", "/a"));
    expectNotFound(replyOf(root, requestTo("/b")), childNotFound("", "/b"));
}

TEST(AddDispatcherService, GivesAnEmptyDispatcherUnderTheName)
{
    BwaDispatcherFcgiService root;

    BwaDispatcherFcgiService* child = root.addDispatcherService(a);

    EXPECT_STREQ(child->metaObject()->className(), "BwaDispatcherFcgiService");
    EXPECT_EQ(child->parentService(), &root);
    EXPECT_EQ(child->parent(), &root);
    EXPECT_EQ(root.childServiceName(child), a);
}

TEST(AddDispatcherService, GivenUsedNameReplacesTheService)
{
    BwaDispatcherFcgiService root;
    auto* service = new LabelledService("old");
    const QPointer<LabelledService> old(service);
    root.addService(a, service);

    root.addDispatcherService(a)->addService(b, new LabelledService("b"));

    EXPECT_EQ(replyOf(root, requestTo("/a/b")).raw, "b");
    deleteDeferred();
    EXPECT_TRUE(old.isNull());
}

TEST(RemoveService, GivesTheServiceWithoutParents)
{
    BwaDispatcherFcgiService root;
    LabelledService service("service");
    root.addService(a, &service);

    BwaAbstractFcgiService* removed = root.removeService(a);

    EXPECT_EQ(removed, &service);
    EXPECT_EQ(service.parentService(), nullptr);
    EXPECT_EQ(service.parent(), nullptr);
    EXPECT_TRUE(root.childServiceName(&service).isNull());
    expectNotFound(replyOf(root, requestTo("/a")), childNotFound("", "/a"));
}

TEST(RemoveService, GivenUnknownNameIsNull)
{
    BwaDispatcherFcgiService root;
    root.addService(a, new LabelledService("a"));

    EXPECT_EQ(root.removeService(b), nullptr);
    EXPECT_EQ(root.removeService(QStringLiteral("A")), nullptr);
    EXPECT_EQ(root.removeService(QString()), nullptr);
    EXPECT_EQ(replyOf(root, requestTo("/a")).raw, "a");
}

TEST(RemoveService, WhenCalledAgainIsNull)
{
    BwaDispatcherFcgiService root;
    LabelledService service("service");
    root.addService(a, &service);
    root.removeService(a);

    EXPECT_EQ(root.removeService(a), nullptr);
}

TEST(RemoveService, KeepsTheOtherChildren)
{
    BwaDispatcherFcgiService root;
    LabelledService removed("a");
    root.addService(a, &removed);
    root.addService(b, new LabelledService("b"));

    root.removeService(a);

    EXPECT_EQ(replyOf(root, requestTo("/b")).raw, "b");
}

// Settled: a released service asks once more for its name, which is null by then and so equals the
// empty one.
TEST(RemoveService, ReleasesTheEmptyNamedChildAsWell)
{
    BwaDispatcherFcgiService root;
    LabelledService named("named");
    LabelledService nameless("nameless");
    root.addService(a, &named);
    root.addService(QString(), &nameless);

    EXPECT_EQ(root.removeService(a), &named);

    EXPECT_EQ(nameless.parentService(), nullptr);
    EXPECT_EQ(nameless.parent(), nullptr);
    EXPECT_TRUE(root.childServiceName(&nameless).isNull());
}

TEST(RemoveService, GivenEmptyNameReleasesOnlyTheEmptyNamedChild)
{
    BwaDispatcherFcgiService root;
    auto* named = new LabelledService("named");
    LabelledService nameless("nameless");
    root.addService(a, named);
    root.addService(QString(), &nameless);

    EXPECT_EQ(root.removeService(QStringLiteral("")), &nameless);

    EXPECT_EQ(named->parentService(), &root);
    EXPECT_EQ(root.childServiceName(named), a);
}

TEST(ChildServiceName, IsTheNameOfTheChild)
{
    BwaDispatcherFcgiService root;
    auto* first = new LabelledService("first");
    auto* second = new LabelledService("second");
    root.addService(a, first);
    root.addService(QStringLiteral("x/y"), second);

    EXPECT_EQ(root.childServiceName(first), a);
    EXPECT_EQ(root.childServiceName(second), QStringLiteral("x/y"));
}

TEST(ChildServiceName, GivenStrangerIsNull)
{
    BwaDispatcherFcgiService root;
    BwaDispatcherFcgiService* child = root.addDispatcherService(a);
    auto* grandchild = new LabelledService("grandchild");
    child->addService(b, grandchild);

    EXPECT_TRUE(root.childServiceName(grandchild).isNull());
    EXPECT_TRUE(root.childServiceName(nullptr).isNull());
    EXPECT_TRUE(root.childServiceName(&root).isNull());
}

// Destroyed children. A dispatcher that kept one would call it with the next request.

TEST(DestroyedChild, IsForgotten)
{
    BwaDispatcherFcgiService root;
    auto* child = new LabelledService("child");
    root.addService(a, child);

    delete child;

    expectNotFound(replyOf(root, requestTo("/a")), childNotFound("", "/a"));
    EXPECT_EQ(root.removeService(a), nullptr);
}

TEST(DestroyedChild, WhenDeletedLaterIsForgotten)
{
    BwaDispatcherFcgiService root;
    auto* child = new LabelledService("child");
    root.addService(a, child);

    child->deleteLater();

    EXPECT_EQ(replyOf(root, requestTo("/a")).raw, "child");
    deleteDeferred();
    expectNotFound(replyOf(root, requestTo("/a")), childNotFound("", "/a"));
}

TEST(DestroyedChild, GivenDispatcherIsForgottenByThePrefixWalk)
{
    BwaDispatcherFcgiService root;
    BwaDispatcherFcgiService* child = root.addDispatcherService(a);
    child->addService(b, new LabelledService("b"));

    delete child;

    expectNotFound(replyOf(root, requestTo("/a/b")), childNotFound("", "/a/b"));
}

TEST(DestroyedChild, LeavesItsSiblings)
{
    BwaDispatcherFcgiService root;
    auto* child = new LabelledService("a");
    root.addService(a, child);
    root.addService(b, new LabelledService("b"));

    delete child;

    EXPECT_EQ(replyOf(root, requestTo("/b")).raw, "b");
}

TEST(DestroyedChild, WhenRemovedBeforeDoesNotTouchItsSuccessor)
{
    BwaDispatcherFcgiService root;
    auto child = std::make_unique<LabelledService>("old");
    root.addService(a, child.get());
    root.removeService(a);
    root.addService(a, new LabelledService("new"));

    child.reset();

    EXPECT_EQ(replyOf(root, requestTo("/a")).raw, "new");
}

TEST(DestroyedChild, WhenRemovedBeforeDoesNotTouchTheDestroyedDispatcher)
{
    auto child = std::make_unique<LabelledService>("child");
    auto root = std::make_unique<BwaDispatcherFcgiService>();
    root->addService(a, child.get());
    root->removeService(a);
    root.reset();

    EXPECT_EQ(replyOf(*child, requestTo("/a")).raw, "child");
}

TEST(DestroyedChild, WhenRemovedAndAddedAgainIsForgotten)
{
    BwaDispatcherFcgiService root;
    auto* child = new LabelledService("child");
    root.addService(a, child);
    root.removeService(a);
    root.addService(a, child);

    delete child;

    expectNotFound(replyOf(root, requestTo("/a")), childNotFound("", "/a"));
}

TEST(DestroyedChild, WhenRemovedAndAddedUnderOtherNameIsForgottenUnderThatOnly)
{
    BwaDispatcherFcgiService root;
    auto* child = new LabelledService("child");
    root.addService(a, child);
    root.removeService(a);
    root.addService(b, child);
    root.addService(a, new LabelledService("successor"));

    delete child;

    expectNotFound(replyOf(root, requestTo("/b")), childNotFound("", "/b"));
    EXPECT_EQ(replyOf(root, requestTo("/a")).raw, "successor");
}

TEST(DestroyedChild, WhenMovedIsForgottenByTheNewDispatcherOnly)
{
    BwaDispatcherFcgiService first;
    BwaDispatcherFcgiService second;
    auto* child = new LabelledService("child");
    first.addService(a, child);
    second.addService(a, child);
    first.addService(a, new LabelledService("successor"));

    delete child;

    expectNotFound(replyOf(second, requestTo("/a")), childNotFound("", "/a"));
    EXPECT_EQ(replyOf(first, requestTo("/a")).raw, "successor");
}

TEST(DestroyedChild, WhenMovedThereAndBackIsForgotten)
{
    BwaDispatcherFcgiService first;
    BwaDispatcherFcgiService second;
    auto* child = new LabelledService("child");
    first.addService(a, child);
    second.addService(b, child);
    first.addService(a, child);

    delete child;

    expectNotFound(replyOf(first, requestTo("/a")), childNotFound("", "/a"));
    expectNotFound(replyOf(second, requestTo("/b")), childNotFound("", "/b"));
}

TEST(DestroyedChild, WhenMovedOutlivesTheOldDispatcher)
{
    auto first = std::make_unique<BwaDispatcherFcgiService>();
    BwaDispatcherFcgiService second;
    auto* child = new LabelledService("child");
    first->addService(a, child);
    second.addService(a, child);

    first.reset();

    EXPECT_EQ(replyOf(second, requestTo("/a")).raw, "child");
    delete child;
    expectNotFound(replyOf(second, requestTo("/a")), childNotFound("", "/a"));
}

TEST(DestroyedChild, WhenAddedAgainToTheSameDispatcherManyTimesIsForgotten)
{
    BwaDispatcherFcgiService root;
    auto* child = new LabelledService("child");
    for (int i = 0; i < 5; ++i) {
        root.addService(a, child);
        root.removeService(a);
        root.addService(b, child);
        root.removeService(b);
    }
    root.addService(a, child);

    delete child;

    expectNotFound(replyOf(root, requestTo("/a")), childNotFound("", "/a"));
}

TEST(DestroyedDispatcher, DestroysItsChildren)
{
    auto root = std::make_unique<BwaDispatcherFcgiService>();
    const QPointer<BwaDispatcherFcgiService> child(root->addDispatcherService(a));
    const QPointer<BwaDispatcherFcgiService> grandchild(child->addDispatcherService(b));

    root.reset();

    EXPECT_TRUE(child.isNull());
    EXPECT_TRUE(grandchild.isNull());
}
