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
    explicit BwaHtmlOpeningPairedTag(const QString& tagName);
    BwaHtmlOpeningPairedTag(const QString& tagName, const BwaHtmlAttributeList& attributes);
    ~BwaHtmlOpeningPairedTag() override;

    BwaHtmlOpeningPairedTag(const BwaHtmlOpeningPairedTag&) = default;
    BwaHtmlOpeningPairedTag& operator=(const BwaHtmlOpeningPairedTag&) = default;

    void render(std::ostream& stream) const override;

    BwaHtmlAttributeList attributes() const { return m_attributes; }

private:
    BwaHtmlAttributeList m_attributes;
};

#endif
