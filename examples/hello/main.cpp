// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include <bwebapi/rest.h>

struct Numbers {
    int a = 0;
    int b = 0;
};

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    BwaRestService api;
    api.get("/greeting/{name}", [](const BwaRestCall& call) -> BwaRestReply {
        return QVariantMap{{"greeting", "Hello, " + call.text("name")}};
    });

    const auto fields = BwaRestFields<Numbers>().add("a", &Numbers::a).add("b", &Numbers::b);
    api.post("/sum", fields, [](const BwaRestCall&, const Numbers& sent) -> BwaRestReply {
        return QVariantMap{{"sum", qint64{sent.a} + sent.b}};
    });

    // The socket that the web server connects to.
    return BwaRestServer({{"/api", &api}}).accessLog().run(QString::fromLatin1(argv[1]));
}
