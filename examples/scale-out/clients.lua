-- SPDX-FileCopyrightText: The Brindo Web API authors
-- SPDX-License-Identifier: MIT

-- Clients that take turns, each with its line of the file of cookies.

local cookies = {}
local turn = 0

function init(arguments)
    for line in io.lines(arguments[1]) do
        cookies[#cookies + 1] = line
    end
end

function request()
    turn = turn % #cookies + 1
    return wrk.format("GET", nil, { Cookie = cookies[turn] })
end
