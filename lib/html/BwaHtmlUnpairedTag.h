// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTMLUNPAIREDTAG_H
#define BWAHTMLUNPAIREDTAG_H

#include "html/BwaAbstractHtmlTag.h"
#include "html/BwaHtmlAttributeList.h"

/** A tag that stands alone, such as <br />. */
class BWA_EXPORT BwaHtmlUnpairedTag : public BwaAbstractHtmlTag
{
public:
    explicit BwaHtmlUnpairedTag(const QString& tagName);
    BwaHtmlUnpairedTag(const QString& tagName, const BwaHtmlAttributeList& attributes);
    ~BwaHtmlUnpairedTag() override;

    BwaHtmlUnpairedTag(const BwaHtmlUnpairedTag&) = default;
    BwaHtmlUnpairedTag& operator=(const BwaHtmlUnpairedTag&) = default;

    void render(std::ostream& stream) const override;

    BwaHtmlAttributeList attributes() const { return m_attributes; }

private:
    BwaHtmlAttributeList m_attributes;
};

#endif
