-- The language-core programs of script_core_bench, in Lua 5.4, timed with os.clock.
-- Prints one line per program: name, milliseconds (the best of five runs).
local function best(f)
  local b = math.huge
  for _ = 1, 5 do
    local t = os.clock()
    f()
    b = math.min(b, os.clock() - t)
  end
  return b * 1000
end

local programs = {
  { "numeric_loop", function()
      local s = 0
      for i = 1, 1000000 do s = s + i end
      return s
    end },
  -- Lua's own way of building a long string: "s = s .. x" copies the whole string every time
  -- (about 85 s for a million), so the fair anchor is a table of parts joined once.
  { "string_loop", function()
      local parts = {}
      for i = 1, 1000000 do parts[#parts + 1] = "x" end
      return table.concat(parts)
    end },
  { "fib25", function()
      local function fib(n) if n < 2 then return n end return fib(n - 1) + fib(n - 2) end
      return fib(25)
    end },
}
for _, p in ipairs(programs) do
  print(string.format("%s %.3f", p[1], best(p[2])))
end
