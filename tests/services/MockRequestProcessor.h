// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef MOCKREQUESTPROCESSOR_H
#define MOCKREQUESTPROCESSOR_H

#include "services/BwaAbstractFcgiRequestProcessor.h"

#include <gmock/gmock.h>

/** A processor whose calls, and whose end, are expected. */
class MockRequestProcessor : public BwaAbstractFcgiRequestProcessor
{
public:
    // Google Mock reports a call that was not expected; it throws nothing.
    ~MockRequestProcessor() override { die(); } // NOLINT(bugprone-exception-escape)

    MOCK_METHOD(void, processRequest, (BwaFcgiRequest*), (override));
    MOCK_METHOD(void, die, ());
};

#endif
