-- wrk script of bench/load_compare.sh.
--   wrk ... -s bench/load_compare.lua URL [-- COOKIE_FILE]
-- With a cookie file (one "NAME=VALUE" a line), every request carries the next session's cookie,
-- round-robin; each thread starts at its own place in the list so that the threads do not walk in
-- step. At the end one line "RESULT key=value ..." sums the run up for the shell script: requests a
-- second, latency percentiles and maximum in milliseconds, socket errors, timeouts, non-2xx replies.

local threads = {}
local counter = 0

function setup(thread)
  counter = counter + 1
  thread:set("id", counter)
  table.insert(threads, thread)
end

local cookies = {}
local at = 1

function init(args)
  if args[1] then
    for line in io.lines(args[1]) do
      if line ~= "" then cookies[#cookies + 1] = line end
    end
    at = ((id or 1) * 7) % math.max(#cookies, 1) + 1
  end
end

function request()
  if #cookies == 0 then return wrk.format() end
  local cookie = cookies[at]
  at = at % #cookies + 1
  return wrk.format(nil, nil, { Cookie = cookie })
end

function done(summary, latency, requests)
  local e = summary.errors
  local seconds = summary.duration / 1e6
  io.write(string.format(
    "RESULT rps=%.0f p50=%.2f p99=%.2f max=%.2f socket_errors=%d timeouts=%d non2xx=%d requests=%d\n",
    summary.requests / seconds, latency:percentile(50) / 1000, latency:percentile(99) / 1000,
    latency.max / 1000, e.connect + e.read + e.write, e.timeout, e.status, summary.requests))
end
