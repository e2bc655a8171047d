// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "html/BwaAbstractHtmlTag.h"

BwaAbstractHtmlTag::BwaAbstractHtmlTag(const QString& tagName)
    : m_tagName(tagName)
{
}

BwaAbstractHtmlTag::~BwaAbstractHtmlTag() = default;
