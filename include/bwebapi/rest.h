// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWEBAPI_REST_H
#define BWEBAPI_REST_H

// All of the layer that applications are written against, and QCoreApplication, which each needs.

#include "rest/BwaRestCall.h"
#include "rest/BwaRestCancel.h"
#include "rest/BwaRestErrors.h"
#include "rest/BwaRestEvents.h"
#include "rest/BwaRestFields.h"
#include "rest/BwaRestGlobal.h"
#include "rest/BwaRestGroup.h"
#include "rest/BwaRestLater.h"
#include "rest/BwaRestProblem.h"
#include "rest/BwaRestReply.h"
#include "rest/BwaRestRoute.h"
#include "rest/BwaRestRule.h"
#include "rest/BwaRestSchema.h"
#include "rest/BwaRestServer.h"
#include "rest/BwaRestService.h"
#include "rest/BwaRestSessionStore.h"
#include "rest/BwaRestSessions.h"
#include "rest/BwaRestType.h"
#include "rest/BwaRestUpload.h"
#include "rest/BwaRestValue.h"

#include <QCoreApplication>

#endif
