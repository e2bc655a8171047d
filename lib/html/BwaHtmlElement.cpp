// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "html/BwaHtmlElement.h"

#include "html/BwaHtmlClosingPairedTag.h"
#include "html/BwaHtmlOpeningPairedTag.h"
#include "html/BwaHtmlTextNode.h"
#include "html/BwaHtmlUnpairedTag.h"

#include <ostream>

BwaHtmlElement::BwaHtmlElement(const QString& tagName)
    : m_tagName(tagName)
{
}

BwaHtmlElement::BwaHtmlElement(const QString& tagName, const BwaHtmlAttributeList& attributes)
    : m_tagName(tagName)
    , m_attributes(attributes)
{
}

BwaHtmlElement::BwaHtmlElement(const QString& tagName, const BwaHtmlNodeList& children)
    : m_tagName(tagName)
    , m_children(children)
{
}

BwaHtmlElement::BwaHtmlElement(const QString& tagName, const QString& text)
    : m_tagName(tagName)
    , m_children(BwaHtmlTextNode(text))
{
}

BwaHtmlElement::BwaHtmlElement(const QString& tagName, const BwaHtmlAttributeList& attributes,
                               const BwaHtmlNodeList& children)
    : m_tagName(tagName)
    , m_attributes(attributes)
    , m_children(children)
{
}

BwaHtmlElement::BwaHtmlElement(const QString& tagName, const BwaHtmlAttributeList& attributes,
                               const QString& text)
    : m_tagName(tagName)
    , m_attributes(attributes)
    , m_children(BwaHtmlTextNode(text))
{
}

BwaHtmlElement::~BwaHtmlElement() = default;

void BwaHtmlElement::render(std::ostream& stream) const
{
    if (m_children.isEmpty()) {
        stream << BwaHtmlUnpairedTag(m_tagName, m_attributes);
        return;
    }
    stream << BwaHtmlOpeningPairedTag(m_tagName, m_attributes) << m_children
           << BwaHtmlClosingPairedTag(m_tagName);
}

BwaAbstractHtmlNode* BwaHtmlElement::clone() const
{
    return new BwaHtmlElement(m_tagName);
}

BwaHtmlElement& BwaHtmlElement::setAttribute(const QString& name)
{
    m_attributes.set(name);
    return *this;
}

BwaHtmlElement& BwaHtmlElement::setAttribute(const QString& name, const QString& value)
{
    m_attributes.set(name, value);
    return *this;
}

BwaHtmlElement& BwaHtmlElement::append(const BwaAbstractHtmlNode& node)
{
    m_children.append(node);
    return *this;
}

BwaHtmlElement& BwaHtmlElement::append(BwaAbstractHtmlNode* node)
{
    m_children.append(node);
    return *this;
}

BwaHtmlElement& BwaHtmlElement::append(const QString& text)
{
    return append(BwaHtmlTextNode(text));
}
