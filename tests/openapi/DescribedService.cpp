// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// described-service: prints the OpenAPI document of a service with everything that one can hold,
// and of some bodies whether the service takes them, as JSON: see validate.mjs.

#include "json/BwaJson.h"
#include "rest/BwaRestFields.h"
#include "rest/BwaRestService.h"
#include "testing/BwaTestRequest.h"

#include <cstdio>

namespace {

struct Room {
    QString name;
    int floor = 0;
};

struct Device {
    qint64 id = 0;
    QString name;
    int port = 80;
    quint64 count = 0;
    qint64 large = 0;
    double load = 0;
    bool isOn = false;
    QByteArray key;
    QUuid tag;
    QDateTime seen;
    QStringList words;
    std::optional<int> limit;
    Room room;
    std::optional<Room> spare;
    QList<Room> others;
};

struct Page {
    int first = 0;
    QStringList words;
    std::optional<bool> isOn;
};

const BwaRestRule optional = BwaRestRule::any().orDefault();

const auto roomFields = BwaRestFields<Room>()
                            .add("name", &Room::name, BwaRestRule::length(1, 4))
                            .add("floor", &Room::floor, BwaRestRule::range(-2, 9).orDefault());

const auto deviceFields = BwaRestFields<Device>()
                              .add("id", &Device::id, BwaRestRule::any().readOnly().asText())
                              .add("name", &Device::name, BwaRestRule::length(1, 4))
                              .add("port", &Device::port, BwaRestRule::range(1, 9).orDefault())
                              .add("count", &Device::count, optional)
                              .add("large", &Device::large, BwaRestRule::any().asText().orDefault())
                              .add("load", &Device::load, BwaRestRule::range(0, 1).orDefault())
                              .add("on", &Device::isOn, optional)
                              .add("key", &Device::key, optional)
                              .add("tag", &Device::tag, optional)
                              .add("seen", &Device::seen, optional)
                              .add("words", &Device::words, BwaRestRule::length(0, 2).orDefault())
                              .add("limit", &Device::limit, optional)
                              .add("room", &Device::room, roomFields, optional)
                              .add("spare", &Device::spare, roomFields, optional)
                              .add("others", &Device::others, roomFields, optional);

const auto pageFields = BwaRestFields<Page>()
                            .add("first", &Page::first, optional)
                            .add("words", &Page::words)
                            .add("on", &Page::isOn, optional)
                            .keepUnknown();

void addRoutes(BwaRestService& service)
{
    const auto nothing = [](const auto&... /*arguments*/) { return BwaRestReply::empty(); };
    service.get("", nothing);
    service.get("/devices", pageFields, nothing).says(QStringLiteral("Lists devices"));
    service.post("/devices", deviceFields, nothing).gives(deviceFields, 201);
    service.get("/devices/{id:int}", nothing).gives(deviceFields);
    service.remove("/devices/{device:int}", nothing);
    service.patch("/devices/{id:int}", deviceFields, [](const BwaRestCall&, const auto& change) {
        Device device;
        change(device);
        return BwaRestReply::empty();
    });
    service.put("/tags/{tag:uuid}/{name}", deviceFields, nothing);
    service.get("/files/{path...}", nothing);
}

QVariantMap tried(BwaRestService& service, const char* method, const char* path,
                  const QByteArray& body)
{
    BwaTestRequest request(method, QByteArray(path).replace("{id}", "1"));
    request.setBody("application/json", body);
    const int status = request.sendTo(service).statusCode;
    return {{QStringLiteral("method"), QString::fromLatin1(method).toLower()},
            {QStringLiteral("path"), QString::fromLatin1(path)},
            {QStringLiteral("body"), BwaJson::parse(body)},
            {QStringLiteral("isTaken"), status == 204}};
}

} // namespace

int main()
{
    BwaRestService service;
    addRoutes(service);
    QVariantList tries;
    for (const char* body : {R"({"name":"a"})",
                             "{}",
                             R"({"name":""})",
                             R"({"name":"abcde"})",
                             R"({"name":"äöü€"})",
                             R"({"name":"a","x":1})",
                             R"({"name":null})",
                             R"({"name":"a","port":0})",
                             R"({"name":"a","port":9})",
                             R"({"name":"a","port":"9"})",
                             R"({"name":"a","port":1.5})",
                             R"({"name":"a","count":-1})",
                             R"({"name":"a","large":"-12"})",
                             R"({"name":"a","large":"012"})",
                             R"({"name":"a","large":12})",
                             R"({"name":"a","load":0.5,"on":true,"key":"AAAA"})",
                             R"({"name":"a","load":1.5})",
                             R"({"name":"a","on":1})",
                             R"({"name":"a","tag":"123e4567-e89b-12d3-a456-426614174000"})",
                             R"({"name":"a","tag":"1"})",
                             R"({"name":"a","seen":"2026-01-02T03:04:05.6Z"})",
                             R"({"name":"a","seen":"2026-01-02"})",
                             R"({"name":"a","words":["a","b"]})",
                             R"({"name":"a","words":["a","b","c"]})",
                             R"({"name":"a","words":[1]})",
                             R"({"name":"a","limit":null})",
                             R"({"name":"a","limit":7})",
                             R"({"name":"a","limit":"7"})",
                             R"({"name":"a","room":{"name":"b"}})",
                             R"({"name":"a","room":{"name":"b","floor":10}})",
                             R"({"name":"a","room":[]})",
                             R"({"name":"a","spare":null})",
                             R"({"name":"a","spare":{"name":"b","x":1}})",
                             R"({"name":"a","others":[{"name":"b","floor":-2}]})",
                             R"({"name":"a","others":[{}]})",
                             R"([])",
                             R"("a")",
                             R"(null)"}) {
        tries.append(tried(service, "POST", "/devices", body));
        tries.append(tried(service, "PATCH", "/devices/{id}", body));
    }
    tries.append(tried(service, "PATCH", "/devices/{id}", R"({"port":null,"room":null})"));
    const QVariantMap document = service.describe(QStringLiteral("Devices"), QStringLiteral("1.0"));
    const QVariantMap all = {{QStringLiteral("document"), document},
                             {QStringLiteral("tries"), tries}};
    std::puts(BwaJson::write(all).constData());
    return 0;
}
