// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef FUNCTIONSERVICE_H
#define FUNCTIONSERVICE_H

#include "services/BwaAbstractFcgiService.h"

#include <functional>
#include <utility>

/** A service that a function of the test answers for. The function owns each request it gets. */
class FunctionService : public BwaAbstractFcgiService
{
public:
    using Answer = std::function<void(BwaFcgiRequest*)>;

    explicit FunctionService(Answer answer)
        : m_answer(std::move(answer))
    {
    }

    void processRequest(BwaFcgiRequest* request) override { m_answer(request); }

private:
    Answer m_answer;
};

#endif
