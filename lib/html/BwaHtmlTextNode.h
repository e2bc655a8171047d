// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTMLTEXTNODE_H
#define BWAHTMLTEXTNODE_H

#include "html/BwaAbstractHtmlNode.h"

#include <QString>

/** Text, written as it stands. */
class BWA_EXPORT BwaHtmlTextNode : public BwaAbstractHtmlNode
{
public:
    explicit BwaHtmlTextNode(const QString& text);
    ~BwaHtmlTextNode() override;

    void render(std::ostream& stream) const override;
    BwaAbstractHtmlNode* clone() const override;

    QString text() const { return m_text; }

private:
    QString m_text;
};

#endif
