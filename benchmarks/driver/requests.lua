-- SPDX-FileCopyrightText: The Brindo Web API authors
-- SPDX-License-Identifier: MIT

-- Makes wrk send the request of a file: wrk -s requests.lua URL -- REQUEST-FILE HOST
-- Prints the number of replies, the microseconds they took, how many of them had a status of 400
-- and above, and how many requests failed.

local request_text

function init(arguments)
    local file = assert(io.open(arguments[1], "rb"))
    local text = file:read("*a")
    file:close()
    local head_end = assert(text:find("\n\n", 1, true))
    local head = text:sub(1, head_end - 1):gsub("Host: [^\n]*", "Host: " .. arguments[2])
    local body = text:sub(head_end + 2)
    if #body > 0 then
        head = head .. "\nContent-Length: " .. #body
    end
    request_text = head:gsub("\n", "\r\n") .. "\r\n\r\n" .. body
end

function request()
    return request_text
end

function done(summary)
    local errors = summary.errors
    local failed = errors.connect + errors.read + errors.write + errors.timeout
    io.write(string.format("counts %d %d %d %d\n", summary.requests, summary.duration,
                           errors.status, failed))
end
