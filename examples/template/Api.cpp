// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Api.h"

#include "GreetingProcessor.h"
#include "services/BwaStandardFcgiService.h"

Api::Api()
{
    addService(QStringLiteral("greeting"), new BwaStandardFcgiService(new GreetingProcessor));
}
