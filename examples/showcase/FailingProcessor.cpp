// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "FailingProcessor.h"

#include <stdexcept>

void FailingProcessor::processGetMethod(BwaFcgiRequest* /*request*/)
{
    // Answered with 500 and deleted by the caller, which writes the text to the server's log.
    throw std::runtime_error("the machine is out of tea");
}
