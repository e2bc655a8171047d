// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTMLELEMENT_H
#define BWAHTMLELEMENT_H

#include "html/BwaHtmlAttributeList.h"
#include "html/BwaHtmlNodeList.h"

#include <QString>

/** An element: tag name, attributes and children. */
class BWA_EXPORT BwaHtmlElement : public BwaAbstractHtmlNode
{
    Q_DISABLE_COPY(BwaHtmlElement)

public:
    /** An element without attributes and children. */
    explicit BwaHtmlElement(const QString& tagName);
    /** An element without children. */
    BwaHtmlElement(const QString& tagName, const BwaHtmlAttributeList& attributes);
    /** The children are clones of those of @a children. */
    BwaHtmlElement(const QString& tagName, const BwaHtmlNodeList& children);
    /** One child: a text node, also for an empty @a text. */
    BwaHtmlElement(const QString& tagName, const QString& text);
    /** The children are clones of those of @a children. */
    BwaHtmlElement(const QString& tagName, const BwaHtmlAttributeList& attributes,
                   const BwaHtmlNodeList& children);
    /** One child: a text node, also for an empty @a text. */
    BwaHtmlElement(const QString& tagName, const BwaHtmlAttributeList& attributes,
                   const QString& text);
    ~BwaHtmlElement() override;

    /** An element without children is written as an unpaired tag, whatever its name. */
    void render(std::ostream& stream) const override;
    /**
     * A new element of the same name. Settled: it has neither attributes nor children. To put an
     * element with content into a tree, append it by pointer.
     */
    BwaAbstractHtmlNode* clone() const override;

    /** Appends a boolean attribute; never replaces one. */
    BwaHtmlElement& setAttribute(const QString& name);
    /** Appends an attribute; never replaces one. */
    BwaHtmlElement& setAttribute(const QString& name, const QString& value);
    /** Appends a clone of @a node: an empty element if it is an element. */
    BwaHtmlElement& append(const BwaAbstractHtmlNode& node);
    /** Appends @a node itself and takes it over; it must be on the heap and not null. */
    BwaHtmlElement& append(BwaAbstractHtmlNode* node);
    /** Appends a text node. */
    BwaHtmlElement& append(const QString& text);

    /** The name of the tags; it is written unchanged. */
    QString tagName() const { return m_tagName; }
    /** The attributes in the order of their addition. */
    BwaHtmlAttributeList attributes() const { return m_attributes; }
    /** The children, which the element owns. */
    const BwaHtmlNodeList& children() const { return m_children; }

private:
    QString m_tagName;
    BwaHtmlAttributeList m_attributes;
    BwaHtmlNodeList m_children;
};

#endif
