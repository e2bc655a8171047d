// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestFields.h"
#include "rest/BwaRestProblem.h"
#include "rest/BwaRestService.h"
#include "testing/BwaTestRequest.h"

#include <QMap>

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

//! [declare]
struct Place {
    QString city;
    int floor = 0;
};

struct Device {
    qint64 id = 0;
    QString name;
    int port = 80;
    std::optional<double> load;
    QStringList tags;
    Place place;
};

const auto placeFields = BwaRestFields<Place>()
                             .add("city", &Place::city, BwaRestRule::length(1, 64))
                             .add("floor", &Place::floor, BwaRestRule::range(-5, 200).orDefault());

const auto deviceFields = BwaRestFields<Device>()
                              .add("id", &Device::id, BwaRestRule::any().readOnly().asText())
                              .add("name", &Device::name, BwaRestRule::length(1, 64))
                              .add("port", &Device::port, BwaRestRule::range(1, 65535).orDefault())
                              .add("load", &Device::load, BwaRestRule::any().orDefault())
                              .add("tags", &Device::tags, BwaRestRule::length(0, 8).orDefault())
                              .add("place", &Device::place, placeFields);
//! [declare]

//! [check]
struct Page {
    int first = 0;
    int count = 20;
};

const auto pageFields = BwaRestFields<Page>()
                            .add("first", &Page::first, BwaRestRule::range(0, 10000).orDefault())
                            .add("count", &Page::count, BwaRestRule::range(1, 100).orDefault())
                            .check([](const Page& page) {
                                return page.first % page.count == 0
                                    ? QString()
                                    : QStringLiteral("first is to be a multiple of count");
                            });
//! [check]

class Devices
{
public:
    Devices()
    {
        addReading();
        addChanging();
        addDescription();
    }

    BwaRestService service;

private:
    Device& at(const BwaRestCall& call)
    {
        const auto device = m_devices.find(call.number("id"));
        if (device == m_devices.end()) {
            throw BwaRestProblem(404, QStringLiteral("There is no such device"));
        }
        return *device;
    }

    //! [read]
    void addReading()
    {
        service.get("/devices", pageFields, [this](const BwaRestCall&, const Page& page) {
            QVariantList list;
            for (const Device& device : m_devices.values().mid(page.first, page.count)) {
                list.append(deviceFields.json(device));
            }
            return BwaRestReply(list);
        });
        service
            .post("/devices", deviceFields,
                  [this](const BwaRestCall&, Device device) {
                      device.id = m_devices.size() + 1;
                      m_devices.insert(device.id, device);
                      return BwaRestReply::created(QStringLiteral("/devices/%1").arg(device.id),
                                                   deviceFields.json(device));
                  })
            .says(QStringLiteral("Adds a device"))
            .gives(deviceFields, 201);
    }
    //! [read]

    //! [patch]
    void addChanging()
    {
        service.patch("/devices/{id:int}", deviceFields,
                      [this](const BwaRestCall& call, const auto& change) {
                          Device& device = at(call);
                          change(device);
                          return BwaRestReply(deviceFields.json(device));
                      });
    }
    //! [patch]

    //! [describe]
    void addDescription()
    {
        service.get("/openapi.json", [this](const BwaRestCall&) {
            QVariantMap document =
                service.describe(QStringLiteral("Devices"), QStringLiteral("1.0"));
            const QVariantMap here = {{QStringLiteral("url"), QStringLiteral("/api")}};
            document.insert(QStringLiteral("servers"), QVariantList{here});
            return BwaRestReply(document);
        });
    }
    //! [describe]

    QMap<qint64, Device> m_devices; // by their ids
};

BwaTestReply send(Devices& devices, const char* method, const char* target, const QByteArray& body)
{
    BwaTestRequest request(method, target);
    request.setBody("application/json", body);
    return request.sendTo(devices.service);
}

void expectRefused(const BwaTestReply& reply, int status)
{
    EXPECT_EQ(reply.statusCode, status) << reply.body.left(200).toStdString();
    EXPECT_EQ(reply.header("Content-Type"), "application/problem+json");
    EXPECT_LT(reply.body.size(), 20000);
    EXPECT_EQ(reply.errorText, "");
}

const char* const device = R"({"name":"pump","place":{"city":"Ulm"}})";

} // namespace

TEST(HowToFields, GivenADeviceAddsIt)
{
    Devices devices;
    const BwaTestReply reply = send(devices, "POST", "/devices", device);

    EXPECT_EQ(reply.statusCode, 201);
    EXPECT_EQ(reply.header("Location"), "/devices/1");
    EXPECT_EQ(reply.body,
              R"({"id":"1","load":null,"name":"pump","place":{"city":"Ulm","floor":0},"port":80,)"
              R"("tags":[]})");
}

TEST(HowToFields, GivenWrongFieldsTellsEachOfThem)
{
    Devices devices;
    const BwaTestReply reply =
        send(devices, "POST", "/devices", R"({"name":"","port":"80","tags":["a",1],"owner":"me"})");

    EXPECT_EQ(reply.statusCode, 422);
    EXPECT_EQ(reply.header("Content-Type"), "application/problem+json");
    EXPECT_EQ(reply.body,
              R"({"errors":[{"detail":"must be a text of 1 to 64 characters","pointer":"#/name"},)"
              R"({"detail":"must be an integer from 1 to 65535","pointer":"#/port"},)"
              R"({"detail":"must be a text","pointer":"#/tags/1"},)"
              R"({"detail":"is missing","pointer":"#/place"},)"
              R"({"detail":"is unknown","pointer":"#/owner"}],)"
              R"("status":422,"title":"Unprocessable Entity"})");
}

TEST(HowToFields, GivenHostileBodiesRefusesThemAndKeepsServing)
{
    Devices devices;
    send(devices, "POST", "/devices", device);
    const QByteArray before = BwaTestRequest("GET", "/devices").sendTo(devices.service).body;
    const QByteArray deep =
        QByteArray(R"({"place":)").repeated(1000) + QByteArray("}").repeated(1000);
    const QMap<QByteArray, int> expected = {
        {"", 400},
        {"{", 400},
        {"{\"name\":\"\xff\"}", 400},
        {R"({"name":"\udc00"})", 400},
        {R"({"load":1e999})", 400},
        {R"({"port":99999999999999999999999})", 400},
        {QByteArray("[").repeated(500000), 400},
        {deep, 400},
        {QByteArray(deep).replace(":}", ":{}}"), 422},
        {"[]", 422},
        {"null", 422},
        {R"({"port":18446744073709551615})", 422},
        {R"({"port":-9223372036854775808})", 422},
        {R"({"load":"Infinity"})", 422},
        {R"({"name":"a","name":"b"})", 422},
        {R"({"__proto__":{}})", 422},
        {R"({"tags":)" + QByteArray("[").repeated(1000) + QByteArray("]").repeated(1000) + '}',
         422},
        {R"({"tags":[)" + QByteArray("1,").repeated(200000) + "1]}", 422},
        {'"' + QByteArray("a").repeated(1048576) + '"', 413},
    };

    for (auto body = expected.begin(); body != expected.end(); ++body) {
        expectRefused(send(devices, "POST", "/devices", body.key()), *body);
        expectRefused(send(devices, "PATCH", "/devices/1", body.key()), *body);
    }
    EXPECT_EQ(BwaTestRequest("GET", "/devices").sendTo(devices.service).body, before);
}

TEST(HowToFields, GivenAPatchChangesWhatItHas)
{
    Devices devices;
    send(devices, "POST", "/devices", R"({"name":"pump","load":0.5,"place":{"city":"Ulm"}})");

    EXPECT_EQ(send(devices, "PATCH", "/devices/1", R"({"load":null,"place":{"floor":2}})").body,
              R"({"id":"1","load":null,"name":"pump","place":{"city":"Ulm","floor":2},"port":80,)"
              R"("tags":[]})");
    EXPECT_EQ(send(devices, "PATCH", "/devices/2", "{}").statusCode, 404);
}

TEST(HowToFields, GivenAPageListsIt)
{
    Devices devices;
    send(devices, "POST", "/devices", device);

    EXPECT_EQ(BwaTestRequest("GET", "/devices?count=1&first=1").sendTo(devices.service).body, "[]");
    EXPECT_EQ(BwaTestRequest("GET", "/devices?first=1").sendTo(devices.service).body,
              R"({"errors":[{"detail":"first is to be a multiple of count","pointer":"#"}],)"
              R"("status":422,"title":"Unprocessable Entity"})");
    for (const char* query : {"count=0", "count=1e1", "count=", "count=1&count=2", "offset=1"}) {
        EXPECT_EQ(BwaTestRequest("GET", QByteArray("/devices?") + query)
                      .sendTo(devices.service)
                      .statusCode,
                  422)
            << query;
    }
}

TEST(HowToFields, WhenHandlersThrowTellsClientsNothingOfIt)
{
    Devices devices;
    devices.service.put("/devices/{id:int}", deviceFields,
                        [](const BwaRestCall&, const Device&) -> BwaRestReply {
                            throw std::runtime_error("the store is full");
                        });
    const auto checked =
        BwaRestFields<Page>().check([](const Page&) -> QString { throw std::logic_error("why"); });
    devices.service.put("/page", checked,
                        [](const BwaRestCall&, const Page&) { return BwaRestReply::empty(); });

    const BwaTestReply thrown = send(devices, "PUT", "/devices/1", device);

    EXPECT_EQ(thrown.body, R"({"status":500,"title":"Internal Server Error"})");
    EXPECT_EQ(thrown.errorText, R"(Error in REST call PUT "/devices/1": the store is full)");
    EXPECT_EQ(send(devices, "PUT", "/page", "{}").statusCode, 500);
    EXPECT_EQ(send(devices, "POST", "/devices", device).statusCode, 201);
}

TEST(HowToFields, DescribesItself)
{
    Devices devices;
    const BwaTestReply reply = BwaTestRequest("GET", "/openapi.json").sendTo(devices.service);

    EXPECT_EQ(reply.statusCode, 200);
    EXPECT_TRUE(reply.body.contains(R"("servers":[{"url":"/api"}])"));
    EXPECT_TRUE(reply.body.contains(R"("/devices/{id}":{"patch":)"));
}
