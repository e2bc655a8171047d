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
    /** Not explicit: one attribute may stand where a list is asked for. */
    BwaHtmlAttributeList(const BwaHtmlAttribute& attribute);
    ~BwaHtmlAttributeList() override;

    BwaHtmlAttributeList(const BwaHtmlAttributeList&) = default;
    BwaHtmlAttributeList& operator=(const BwaHtmlAttributeList&) = default;

    /** Writes the attributes with one blank between two of them. */
    void render(std::ostream& stream) const override;

    /** Appends a boolean attribute. Settled: a name that is there already is kept as well. */
    BwaHtmlAttributeList& set(const QString& name);
    /** Appends an attribute. Settled: a name that is there already is kept as well. */
    BwaHtmlAttributeList& set(const QString& name, const QString& value);

    /** The attributes in the order of their addition. */
    QList<BwaHtmlAttribute> attributes() const { return m_attributes; }
    /** There are no attributes. */
    bool isEmpty() const { return m_attributes.isEmpty(); }

private:
    QList<BwaHtmlAttribute> m_attributes;
};

#endif
