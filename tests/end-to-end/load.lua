-- SPDX-FileCopyrightText: The Brindo Web API authors
-- SPDX-License-Identifier: MIT

-- Makes wrk send GET and POST requests to the showcase in turns: wrk -t1 -s load.lua URL
-- or to the gateway: wrk -t1 -s load.lua URL -- gateway
-- Prints how many replies came, how many of them were not as they must be, and how many requests
-- failed without one; and of those that were not as they must be status and body.

local requests
local turn = 0
local replies = 0
local wrong = 0
local thread

local bodies = {
    ['{"cookies":[],"query":{"tea":["green"]}}'] = true,
    ['{"article":"tea","gift":false,"total":7.5}'] = true,
}

local isExpected = function(status, body)
    return status == 200 and bodies[body]
end

local function isOfGateway(status, body)
    return status == 200 and body:find('^{"components":.*"servers":%[{"url":"/api"}%]}$')
        or status == 401 and body == '{"status":401,"title":"Unauthorized"}'
end

function setup(one)
    thread = one
end

function init(arguments)
    local json = {["Content-Type"] = "application/json"}
    if arguments[1] == "gateway" then
        isExpected = isOfGateway
        requests = {
            wrk.format("GET", "/api/openapi.json"),
            wrk.format("POST", "/api/devices", json, '{"name": "pump"}'),
        }
    else
        requests = {
            wrk.format("GET", "/api/echo?tea=green"),
            wrk.format("POST", "/api/order", json, '{"article": "tea", "quantity": 3, "price": 2.5}'),
        }
    end
end

function request()
    turn = turn % #requests + 1
    return requests[turn]
end

function response(status, headers, body)
    replies = replies + 1
    if not isExpected(status, body) then
        wrong = wrong + 1
        io.write("wrong: ", status, " ", body:gsub("%s+", " "):sub(1, 200), "\n")
    end
    report = replies .. " " .. wrong -- for done(), which runs elsewhere
end

function done(summary)
    local errors = summary.errors
    io.write("counts ", thread:get("report") or "0 0", " ",
             errors.connect + errors.read + errors.write + errors.timeout, "\n")
end
