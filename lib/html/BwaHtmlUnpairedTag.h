// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTMLUNPAIREDTAG_H
#define BWAHTMLUNPAIREDTAG_H

#include "html/BwaAbstractHtmlTag.h"
#include "html/BwaHtmlAttributeList.h"

/** A tag without a partner, such as <br />. */
class BWA_EXPORT BwaHtmlUnpairedTag : public BwaAbstractHtmlTag
{
public:
    /** A tag without attributes. */
    explicit BwaHtmlUnpairedTag(const QString& tagName);
    /** A tag with attributes, written in their order. */
    BwaHtmlUnpairedTag(const QString& tagName, const BwaHtmlAttributeList& attributes);
    ~BwaHtmlUnpairedTag() override;

    BwaHtmlUnpairedTag(const BwaHtmlUnpairedTag&) = default;
    BwaHtmlUnpairedTag& operator=(const BwaHtmlUnpairedTag&) = default;

    void render(std::ostream& stream) const override;

    /** The attributes in the order of their addition. */
    BwaHtmlAttributeList attributes() const { return m_attributes; }

private:
    BwaHtmlAttributeList m_attributes;
};

#endif
