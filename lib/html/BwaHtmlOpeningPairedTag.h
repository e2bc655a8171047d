// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTMLOPENINGPAIREDTAG_H
#define BWAHTMLOPENINGPAIREDTAG_H

#include "html/BwaAbstractHtmlTag.h"
#include "html/BwaHtmlAttributeList.h"

/** An opening tag, such as <p class="a">. */
class BWA_EXPORT BwaHtmlOpeningPairedTag : public BwaAbstractHtmlTag
{
public:
    /** A tag without attributes. */
    explicit BwaHtmlOpeningPairedTag(const QString& tagName);
    /** A tag with attributes, written in their order. */
    BwaHtmlOpeningPairedTag(const QString& tagName, const BwaHtmlAttributeList& attributes);
    ~BwaHtmlOpeningPairedTag() override;

    BwaHtmlOpeningPairedTag(const BwaHtmlOpeningPairedTag&) = default;
    BwaHtmlOpeningPairedTag& operator=(const BwaHtmlOpeningPairedTag&) = default;

    void render(std::ostream& stream) const override;

    /** The attributes in the order of their addition. */
    BwaHtmlAttributeList attributes() const { return m_attributes; }

private:
    BwaHtmlAttributeList m_attributes;
};

#endif
