// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Renders cookies, header blocks and HTML of arbitrary texts. Bytes of the input choose what is
// rendered; its lines are the texts. The result equals that of a literal model, also when it is
// rendered a second time.

#include "Choices.h"
#include "Fuzzing.h"
#include "html/BwaHtmlComment.h"
#include "html/BwaHtmlElement.h"
#include "html/BwaHtmlTextNode.h"
#include "http/BwaHttp201StatusHeader.h"
#include "http/BwaHttp401StatusHeader.h"
#include "http/BwaHttpAttachedFileHeader.h"
#include "http/BwaHttpRedirectHeader.h"
#include "http/BwaHttpReplyHeader.h"
#include "support/Rendered.h"

#include <QMap>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

const int deepestElement = 6;

QString nextText(Choices& choices)
{
    const QByteArray bytes = choices.line();
    return QString::fromUtf8(bytes.constData(), bytes.size()); // with its NULs
}

// @a text in Latin-1 up to the first U+0000, with "?" for characters that Latin-1 does not have.
std::string bytesOf(const QString& text)
{
    std::string bytes;
    for (const QChar character : text) {
        const ushort code = character.unicode();
        if (code == 0) {
            return bytes;
        }
        bytes += code > 0xff ? '?' : static_cast<char>(code);
    }
    return bytes;
}

std::string literalQuoted(QString text)
{
    text.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    return "\"" + bytesOf(text.replace(QLatin1Char('"'), QLatin1String("\\\""))) +
        (text.contains(QChar(0)) ? "" : "\"");
}

template <typename Element>
void expectBytes(const Element& element, const std::string& bytes)
{
    EXPECT_EQ(rendered(element), bytes);
    EXPECT_EQ(rendered(element), bytes);
}

BwaHttpCookie nextCookie(Choices& choices)
{
    BwaHttpCookie cookie;
    const int flags = choices.below(64);
    cookie.secure = flags & 1;
    cookie.httpOnly = flags & 2;
    cookie.expired = flags & 4;
    cookie.maxAge = flags & 8 ? 4294967295U : 0;
    cookie.name = nextText(choices);
    cookie.value = nextText(choices);
    cookie.domain = flags & 16 ? nextText(choices) : QString();
    cookie.path = flags & 32 ? nextText(choices) : QString();
    return cookie;
}

std::string literalCookie(const BwaHttpCookie& cookie)
{
    const std::string lifetime = cookie.expired ? "; Expires=Fri, 01-Jan-1971 01:00:00 GMT;"
        : cookie.maxAge                         ? "; Max-Age=4294967295"
                                                : "";
    return "Set-Cookie:" + bytesOf(cookie.name) + "=" + bytesOf(cookie.value) + lifetime +
        (cookie.domain.isNull() ? "" : "; Domain=" + bytesOf(cookie.domain)) +
        (cookie.path.isNull() ? "" : "; Path=" + bytesOf(cookie.path)) +
        (cookie.secure ? "; Secure" : "") + (cookie.httpOnly ? "; HttpOnly" : "");
}

// A header block whose own lines are @a lines, with a cookie.
template <typename Header>
void expectBlock(Header&& header, const std::string& lines, Choices& choices)
{
    const BwaHttpCookie cookie = nextCookie(choices);
    header.cookies.append(cookie);
    expectBytes(header, lines + literalCookie(cookie) + "\n\n");
}

void tryReplyHeader(Choices& choices)
{
    const QString protocol = nextText(choices);
    const QString phrase = nextText(choices);
    const QString name = nextText(choices);
    const QString value = nextText(choices);
    BwaHttpReplyHeader header(protocol, 200, phrase);
    header.addHeader(name, value);
    expectBlock(header,
                bytesOf(protocol) + " 200 " + bytesOf(phrase) + "\n" +
                    bytesOf(name + QLatin1String(": ") + value) + "\n",
                choices);
}

void tryUnauthorizedHeader(Choices& choices)
{
    const QString scheme = nextText(choices);
    const QString name = nextText(choices);
    const QString value = nextText(choices);
    const QString start = scheme + QLatin1String(", ") + name + QLatin1Char('=');
    expectBlock(BwaHttp401StatusHeader({{scheme, {{name, value}}}}),
                "Status: 401 Unauthorized\nWWW-Authenticate: " + bytesOf(start) +
                    (start.contains(QChar(0)) ? "" : literalQuoted(value)) + "\n",
                choices);
}

void tryHeaderWithContent(Choices& choices)
{
    const QString first = nextText(choices);
    const QString second = nextText(choices);
    expectBlock(BwaHttp201StatusHeader(first, second),
                "Status: 201 Created\nContent-Type: " + bytesOf(first) +
                    "\nLocation:: " + bytesOf(second) + "\n",
                choices);
    expectBlock(BwaHttpAttachedFileHeader(first, second),
                "Content-Type: " + bytesOf(first) +
                    "\nContent-Disposition: attachment; filename=" + literalQuoted(second) + "\n",
                choices);
}

void tryRedirectHeader(Choices& choices)
{
    const QString location = nextText(choices);
    expectBlock(BwaHttpRedirectHeader(location, true),
                "Status: 301 Moved Permanently\nLocation: " + bytesOf(location) + "\n", choices);
}

// A node and the bytes that it must write.
struct ModelledNode {
    std::unique_ptr<BwaAbstractHtmlNode> node;
    std::string bytes;
};

ModelledNode nextNode(Choices& choices, int depth);

ModelledNode nextElement(Choices& choices, int depth)
{
    const QString name = nextText(choices);
    auto element = std::make_unique<BwaHtmlElement>(name);
    std::string attributes;
    for (int left = choices.below(3); left > 0; --left) {
        const QString attribute = nextText(choices);
        const QString value = nextText(choices);
        element->setAttribute(attribute, value);
        attributes += " " + bytesOf(attribute) + "=\"" + bytesOf(value) + "\"";
    }
    std::string children;
    const int count = depth < deepestElement ? choices.below(4) : 0;
    for (int left = count; left > 0; --left) {
        ModelledNode child = nextNode(choices, depth + 1);
        element->append(child.node.release());
        children += child.bytes;
    }
    const std::string start = "<" + bytesOf(name) + attributes;
    return {std::move(element),
            count == 0 ? start + " />" : start + ">" + children + "</" + bytesOf(name) + ">"};
}

ModelledNode nextNode(Choices& choices, int depth)
{
    switch (choices.below(3)) {
    case 0: {
        const QString text = nextText(choices);
        return {std::make_unique<BwaHtmlTextNode>(text), bytesOf(text)};
    }
    case 1: {
        const QString text = nextText(choices);
        return {std::make_unique<BwaHtmlComment>(text), "<!-- " + bytesOf(text) + " -->"};
    }
    default:
        return nextElement(choices, depth);
    }
}

} // namespace

void fuzz(const QByteArray& input)
{
    Choices choices(input);
    switch (choices.below(5)) {
    case 0:
        tryReplyHeader(choices);
        break;
    case 1:
        tryUnauthorizedHeader(choices);
        break;
    case 2:
        tryHeaderWithContent(choices);
        break;
    case 3:
        tryRedirectHeader(choices);
        break;
    default:
        const ModelledNode node = nextNode(choices, 0);
        expectBytes(*node.node, node.bytes);
    }
}
