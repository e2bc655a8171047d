-- SPDX-FileCopyrightText: The Brindo Web API authors
-- SPDX-License-Identifier: MIT

-- Makes wrk send GET and POST requests to the showcase in turns: wrk -t1 -s load.lua URL
-- Prints how many replies came, how many of them were not as they must be, and how many requests
-- failed without one; and of those that were not as they must be status and body.

local requests
local turn = 0
local replies = 0
local wrong = 0
local thread

local expected = {
    ['{"cookies":[],"query":{"tea":["green"]}}\n'] = true,
    ['{"article":"tea","gift":false,"total":7.5}\n'] = true,
}

function setup(one)
    thread = one
end

function init()
    requests = {
        wrk.format("GET", "/api/echo?tea=green"),
        wrk.format("POST", "/api/order", {["Content-Type"] = "application/json"},
                   '{"article": "tea", "quantity": 3, "price": 2.5}'),
    }
end

function request()
    turn = turn % #requests + 1
    return requests[turn]
end

function response(status, headers, body)
    replies = replies + 1
    if status ~= 200 or not expected[body] then
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
