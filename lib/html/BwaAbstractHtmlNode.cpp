// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "html/BwaAbstractHtmlNode.h"

BwaAbstractHtmlNode::~BwaAbstractHtmlNode() = default;
