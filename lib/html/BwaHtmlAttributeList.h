// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTMLATTRIBUTELIST_H
#define BWAHTMLATTRIBUTELIST_H

#include "html/BwaHtmlAttribute.h"

#include <QList>

/** Attributes in the order of their addition. */
class BWA_EXPORT BwaHtmlAttributeList : public BwaAbstractCgiStreamableElement
{
public:
    /** A list without attributes. */
    BwaHtmlAttributeList();
    /** A list of one attribute. Not explicit, so that an attribute can be passed as a list. */
    BwaHtmlAttributeList(const BwaHtmlAttribute& attribute);
    ~BwaHtmlAttributeList() override;

    BwaHtmlAttributeList(const BwaHtmlAttributeList&) = default;
    BwaHtmlAttributeList& operator=(const BwaHtmlAttributeList&) = default;

    /** Writes the attributes, separated by single blanks. */
    void render(std::ostream& stream) const override;

    /** Appends a boolean attribute. Settled: an older one of the same name stays in the list. */
    BwaHtmlAttributeList& set(const QString& name);
    /** Appends an attribute. Settled: an older one of the same name stays in the list. */
    BwaHtmlAttributeList& set(const QString& name, const QString& value);

    /** The attributes in the order of their addition. */
    QList<BwaHtmlAttribute> attributes() const { return m_attributes; }
    /** Whether there are no attributes. */
    bool isEmpty() const { return m_attributes.isEmpty(); }

private:
    QList<BwaHtmlAttribute> m_attributes;
};

#endif
