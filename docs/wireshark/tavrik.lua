-- Dissector for the datagrams of a tavrik console: reports to boxes, their queries and answers, notices to the OSD,
-- commands and the device status. docs/protocol.md describes them.
--
-- Put it into the folder of personal Lua plugins (Help, About, Folders), or: tshark -X lua_script:tavrik.lua
--
-- It is heuristic: boxes listen on port 80 plus any offset. What is not exactly one of these messages is left to
-- others. Where an offset leads to a port that another protocol has (43: NTP), set the preference
-- udp.heuristic_first.

local tavrik = Proto("tavrik", "Tavrik console")

local fields = {}
for name, kind in pairs {
    message = "string", head = "bytes", modifiers = "uint8", reserved = "uint8", key = "uint8", locks = "uint8",
    buttons = "uint8", x = "uint16", y = "uint16", dx = "int8", dy = "int8", wheel = "int8", capslock = "string",
    numlock = "string", query = "string", width = "string", height = "string", mode = "string", command = "string",
    notice = "string", argument = "string", entry = "string", screen = "string", hotkey = "string", column = "string",
    row = "string", console = "string", mice = "string", keyboards = "string", panels = "string",
} do
    fields[name] = ProtoField[kind]("tavrik." .. name, name)
end
tavrik.fields = fields

local COMMAND_PORT, NOTICE_PORT = 41236, 41237

-- Reports: head, size, the fields behind the head, and where one byte has to be zero or two have to be equal.
local keys6 = { "modifiers", "reserved", "key", "key", "key", "key", "key", "key" }
local REPORTS = {
    { name = "keyboard report", head = "\x57\xAB\x01", size = 11, parts = keys6, zero = 4 },
    { name = "keyboard report with locks", head = "\x57\xAB\x01", size = 12, zero = 4,
      parts = { "modifiers", "reserved", "key", "key", "key", "key", "key", "key", "locks" } },
    { name = "pointer report", head = "\x57\xAB\x04\x01", size = 10, parts = { "buttons", "x", "y", "wheel" } },
    { name = "relative pointer report", head = "\x57\xAB\x02", size = 7, parts = { "buttons", "dx", "dy", "wheel" } },
    { name = "user-list pointer report", head = "\x4B\x00\x02\x07", size = 11, equal = 9,
      parts = { "buttons", "x", "y", "wheel", "wheel" } },
    { name = "user-list keyboard report", head = "\x4B\x00\x01\x08", size = 12, parts = keys6, zero = 5 },
}

-- Commands; the first four count when they are the whole text, the others by their start.
local COMMANDS = { "OSDQUIT", "OSDSTART", "PREVIEWQUIT", "KVMQUIT", "relation", "details", "hotkey", "PAUSE",
    "CONTINUE", "MTO", "[seq]" }
local NOTICES = { "OSDSTART", "OSDQUIT", "PREVIEWSTART", "PREVIEWQUIT", "KVMSTART" }

local function begins(text, start) return text:sub(1, #start) == start end

-- Lists of { field, offset, text }, offsets from 0. `out` gets the pieces between marks.
local function pieces(out, text, from, mark, name)
    while from <= #text do
        local stop = text:find(mark, from + 1, true) or #text + 1
        out[#out + 1] = { name, from, text:sub(from + 1, stop - 1) }
        from = stop
    end
    return out
end

local function behind(text, mark) return text:find(mark, 1, true) or #text end

local fill = {}

function fill.relation(text)
    local from = behind(text, "&")
    if text == "relation&0,0,0" then
        return { { "argument", from, text:sub(from + 1) } }
    end
    return pieces({}, text, from, "#", "entry")
end

function fill.details(text)
    local parts = pieces({}, text, behind(text, "&"), "#", "entry")
    if parts[1] then
        parts[1][1] = "screen"
    end
    return parts
end

function fill.hotkey(text) return pieces({}, text, behind(text, "&"), "#", "hotkey") end

function fill.MTO(text)
    local parts = pieces({}, text, behind(text, ":"), ",", "column")
    if #parts < 2 then
        return {}
    end
    parts[2][1] = "row"
    return { parts[1], parts[2] }
end

fill["[seq]"] = function(text)
    local line = pieces({}, text, 0, "\n", "console")[2]
    if not line then
        return {}
    end
    local from = behind(line[3], "=")
    return { { "console", line[2] + from, line[3]:sub(from + 1) } }
end

local function lights(text)
    local from, _, caps = text:find("^out&capslock=(o[nf]f?)#numlock=o[nf]f?$")
    local num = text:match("numlock=(.*)$")
    if not from or caps == "of" or num == "of" or caps == "onf" or num == "onf" then
        return nil
    end
    return { { "capslock", 13, caps }, { "numlock", #text - #num, num } }
end

local function answer(text)
    if not text:find("vi_w=", 1, true) then
        return nil
    end
    local parts = {}
    for name, key in pairs { width = "vi_w=", height = "vi_h=", mode = "kvm=" } do
        local _, stop = text:find(key, 1, true)
        if stop then
            parts[#parts + 1] = { name, stop, text:sub(stop + 1):match("^[^&]*"):sub(1, 4) }
        end
    end
    table.sort(parts, function(a, b) return a[2] < b[2] end)
    return parts
end

local function status(text)
    local address = text:match("^%[ack%]\n%[controlled%]=([^\n]*)")
    if not address then
        return nil
    end
    local parts = { { "console", 19, address } }
    local digits = text:match("^[^\n]*\n[^\n]*\n[^\n=]*=(...)$")
    if digits then
        for i, name in ipairs { "mice", "keyboards", "panels" } do
            parts[#parts + 1] = { name, #text - 4 + i, digits:sub(i, i) }
        end
    end
    return parts
end

local function notice(text)
    for _, word in ipairs(NOTICES) do
        if text == word then
            return word, { { "notice", 0, word } }
        end
    end
    if begins(text, "TO:") then
        local parts = pieces({ { "notice", 0, "TO:" } }, text, 3, ",", "screen")
        if #parts == 4 then
            parts[3][1], parts[4][1] = "column", "row"
            return "TO:", parts
        end
        return "TO:", { parts[1] }
    end
end

local function command(text)
    for i, word in ipairs(COMMANDS) do
        if text == word or (i > 4 and begins(text, word)) then
            local parts = { { "command", 0, word } }
            for _, part in ipairs(fill[word] and fill[word](text) or {}) do
                parts[#parts + 1] = part
            end
            return word, parts
        end
    end
end

-- The name of a text and its parts; nil when it is none of these.
local function textOf(text, toPort)
    if text == "link" then
        return "query", { { "query", 0, text } }
    end
    for name, take in pairs { lights = lights, status = status } do
        local parts = take(text)
        if parts then
            return name, parts
        end
    end
    local word, parts
    if toPort == NOTICE_PORT then
        word, parts = notice(text)
        if word then
            return "notice " .. word, parts
        end
    elseif toPort == COMMAND_PORT then
        word, parts = command(text)
        if word then
            return "command " .. word, parts
        end
    end
    parts = answer(text)
    if parts then
        return "answer", parts
    end
end

local function reportOf(bytes)
    for _, row in ipairs(REPORTS) do
        if #bytes == row.size and begins(bytes, row.head)
            and (not row.zero or bytes:byte(row.zero + 1) == 0)
            and (not row.equal or bytes:byte(row.equal + 1) == bytes:byte(row.equal + 2)) then
            return row
        end
    end
end

local function open(tvb, pinfo, tree, name)
    pinfo.cols.protocol = "TAVRIK"
    pinfo.cols.info = name
    local root = tree:add(tavrik, tvb())
    root:append_text(": " .. name)
    root:add(fields.message, name):set_generated()
    return root
end

local function dissect(tvb, pinfo, tree)
    local bytes = tvb:raw()
    local report = reportOf(bytes)
    if report then
        local root = open(tvb, pinfo, tree, report.name)
        root:add(fields.head, tvb(0, #report.head))
        local at = #report.head
        for _, name in ipairs(report.parts) do
            local size = (name == "x" or name == "y") and 2 or 1
            root:add_le(fields[name], tvb(at, size))
            at = at + size
        end
        return true
    end
    local text = bytes:match("^(.-)%z*$")
    if text == "" or text:find("[^\n -~]") then
        return false
    end
    local name, parts = textOf(text, pinfo.dst_port)
    if not name then
        return false
    end
    local root = open(tvb, pinfo, tree, name)
    for _, part in ipairs(parts) do
        root:add(fields[part[1]], tvb(part[2], #part[3]), part[3])
    end
    return true
end

function tavrik.dissector(tvb, pinfo, tree) dissect(tvb, pinfo, tree) end

tavrik:register_heuristic("udp", dissect)
