// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaAbstractCgiInput.h"

BwaAbstractCgiInput::BwaAbstractCgiInput() = default;

BwaAbstractCgiInput::~BwaAbstractCgiInput() = default;
