// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWEBAPI_REDIS_H
#define BWEBAPI_REDIS_H

// All of the library for sessions in Redis.

#include "redis/BwaRedisCookiesFcgiSessionIdentifier.h"
#include "redis/BwaRedisGlobal.h"
#include "redis/BwaRedisRestStore.h"
#include "redis/BwaRedisSession.h"
#include "redis/BwaRedisSessionTokenFcgiSessionIdentifier.h"
#include "redis/BwaRedisSessions.h"
#include "redis/BwaRedisSettings.h"

#endif
