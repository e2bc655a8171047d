// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTMLTEXTNODE_H
#define BWAHTMLTEXTNODE_H

#include "html/BwaAbstractHtmlNode.h"

#include <QString>

/** Text, which is written unchanged: the caller escapes what comes from outside. */
class BWA_EXPORT BwaHtmlTextNode : public BwaAbstractHtmlNode
{
public:
    /** A node of that text, which is not escaped. */
    explicit BwaHtmlTextNode(const QString& text);
    ~BwaHtmlTextNode() override;

    void render(std::ostream& stream) const override;
    BwaAbstractHtmlNode* clone() const override;

    /** The text as it was given. */
    QString text() const { return m_text; }

private:
    QString m_text;
};

#endif
