-- SPDX-FileCopyrightText: The Brindo Web API authors
-- SPDX-License-Identifier: MIT

-- Makes wrk send requests of all kinds to the application for faults, in turns. Prints how many
-- replies came, how many of them had a status that none of the requests is answered with, and how
-- many requests failed.

local threads = {}
local requests
local turn = 0
unexpected = 0 -- seen by done()

function setup(thread)
    table.insert(threads, thread)
end

local function upload()
    local part = "--b\r\nContent-Disposition: form-data; name=\"%s\"%s\r\n\r\n%s\r\n"
    return part:format("note", "", "fresh") ..
        part:format("file", "; filename=\"a.bin\"", string.rep("0123456789abcdef", 512)) .. "--b--\r\n"
end

function init()
    local lasting = "SESSION-TOKEN {11111111-1111-4111-8111-111111111111}:{22222222-2222-4222-8222-222222222222}"
    requests = {
        wrk.format("GET", "/api/now?a=b"),
        wrk.format("POST", "/api/json", {["Content-Type"] = "application/json"},
                   '{"article": "tea", "quantity": 3, "price": [2.5, {"gift": null}]}'),
        wrk.format("POST", "/api/form", {["Content-Type"] = "application/x-www-form-urlencoded"},
                   "name=Ann+Lee&drink=tea;drink=milk&sum=1%2B1%3D2&bare"),
        wrk.format("POST", "/api/upload", {["Content-Type"] = "multipart/form-data; boundary=b"}, upload()),
        wrk.format("POST", "/api/session", {}, ""),
        wrk.format("GET", "/api/session", {["Authorization"] = lasting, ["Cookie"] = "a=b; c=d"}),
        wrk.format("GET", "/api/session"),
        wrk.format("GET", "/api/nowhere"),
        wrk.format("GET", "/api/later"),
    }
end

function request()
    turn = turn % #requests + 1
    return requests[turn]
end

function response(status)
    if status ~= 200 and status ~= 401 and status ~= 404 then
        unexpected = unexpected + 1
    end
end

function done(summary)
    local errors = summary.errors
    local unexpected_replies = 0
    for _, thread in ipairs(threads) do
        unexpected_replies = unexpected_replies + thread:get("unexpected")
    end
    io.write(string.format("counts %d %d %d\n", summary.requests, unexpected_replies,
                           errors.connect + errors.read + errors.write + errors.timeout))
end
