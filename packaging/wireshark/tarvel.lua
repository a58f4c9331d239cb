-- SPDX-License-Identifier: MIT
-- SPDX-FileCopyrightText: The tarveld authors
--
-- Dissects the messages of tarveld on TCP and UDP port 50003. Put it into one of the folders for Lua plugins that
-- "tshark -G folders" names, or load it with -X lua_script:tarvel.lua.

local tarvel = Proto("tarvel", "Tarvel configuration protocol")

local header_size = 20
local start_pattern = 0xff9ac381
local reply_bit = 0x8000
local own = { version = 1, device = 5, service = 4 }

local commands = {
    [1] = "versions report",
    [3] = "IP configuration get",
    [4] = "IP configuration set",
    [7] = "firmware upload",
    [8] = "firmware upgrade",
    [9] = "card reboot",
    [16] = "time reference get",
    [17] = "time reference set",
}
local archives = { [7] = true, [8] = true }
local statuses = {
    [0] = "request",
    [1] = "success",
    [2] = "the command failed",
    [3] = "wrong version",
    [4] = "wrong device",
    [5] = "wrong service",
    [6] = "unknown command",
}

-- Sections in the order in which they travel.
local sections = {
    { bit = 0x08, size = 8, name = "64-bit section" },
    { bit = 0x04, size = 4, name = "32-bit section" },
    { bit = 0x02, size = 2, name = "16-bit section" },
    { bit = 0x01, size = 1, name = "8-bit section" },
}

local f = {
    pattern = ProtoField.uint32("tarvel.pattern", "Start pattern", base.HEX),
    version = ProtoField.uint8("tarvel.version", "Version"),
    format = ProtoField.uint8("tarvel.format", "Message format", base.HEX),
    format8 = ProtoField.bool("tarvel.format.section8", "8-bit section", 8, nil, 0x01),
    format16 = ProtoField.bool("tarvel.format.section16", "16-bit section", 8, nil, 0x02),
    format32 = ProtoField.bool("tarvel.format.section32", "32-bit section", 8, nil, 0x04),
    format64 = ProtoField.bool("tarvel.format.section64", "64-bit section", 8, nil, 0x08),
    device = ProtoField.uint8("tarvel.device", "Device"),
    service = ProtoField.uint8("tarvel.service", "Service"),
    command = ProtoField.uint16("tarvel.command", "Command", base.DEC, commands, 0x7fff),
    reply = ProtoField.bool("tarvel.reply", "Reply", 16, nil, reply_bit),
    status = ProtoField.uint8("tarvel.status", "Status", base.DEC, statuses),
    command_version = ProtoField.uint8("tarvel.command_version", "Command version"),
    sequence = ProtoField.uint32("tarvel.sequence", "Sequence", base.HEX),
    length = ProtoField.uint32("tarvel.length", "Payload length"),
    section = ProtoField.none("tarvel.section", "Section"),
    count = ProtoField.uint32("tarvel.section.count", "Count"),
    data = ProtoField.bytes("tarvel.section.data", "Data"),
    text = ProtoField.string("tarvel.text", "Text"),
    request_in = ProtoField.framenum("tarvel.request_in", "Request in", base.NONE, frametype.REQUEST),
    response_in = ProtoField.framenum("tarvel.response_in", "Reply in", base.NONE, frametype.RESPONSE),
    time = ProtoField.relative_time("tarvel.time", "Time since the request"),
}
tarvel.fields = f

local e = {
    short = ProtoExpert.new("tarvel.short", "Too short for a header", expert.group.MALFORMED, expert.severity.ERROR),
    pattern = ProtoExpert.new("tarvel.bad_pattern", "Unusual start pattern", expert.group.PROTOCOL, expert.severity.WARN),
    number = ProtoExpert.new("tarvel.foreign", "Not for a tarveld", expert.group.PROTOCOL, expert.severity.NOTE),
    status = ProtoExpert.new("tarvel.refused", "The card refuses", expert.group.RESPONSE_CODE, expert.severity.NOTE),
    length = ProtoExpert.new("tarvel.bad_length", "Lengths disagree", expert.group.MALFORMED, expert.severity.ERROR),
    text = ProtoExpert.new("tarvel.bad_text", "Text without its NUL", expert.group.MALFORMED, expert.severity.WARN),
    huge = ProtoExpert.new("tarvel.huge", "More than is reassembled", expert.group.PROTOCOL, expert.severity.WARN),
}
tarvel.experts = e

tarvel.prefs.port = Pref.uint("Port", 50003, "TCP and UDP port of the card")
tarvel.prefs.largest = Pref.uint("Largest payload", 1048576, "Bytes of a payload that are reassembled at most")

local xml = Dissector.get("xml")

-- Requests and replies find each other by client, port and sequence. Filled on the first pass only.
local open_requests, requests_of, replies_of

function tarvel.init()
    open_requests, requests_of, replies_of = {}, {}, {}
end

local function payload_length(tvb, offset)
    return tvb(offset + 16, 4):le_uint()
end

local function pdu_length(tvb, _, offset)
    return header_size + math.min(payload_length(tvb, offset), tarvel.prefs.largest)
end

local function command_name(id)
    return commands[bit.band(id, 0x7fff)] or string.format("command %d", bit.band(id, 0x7fff))
end

-- The first word of an item that stands for a message within its frame: two in one segment are two.
local function message_key(pinfo, tvb)
    return pinfo.number .. "/" .. tvb:offset()
end

local function link(tvb, pinfo, tree, is_reply, command, sequence)
    local client_port = is_reply and pinfo.dst_port or pinfo.src_port
    -- Replies over UDP are broadcast, so that only the port is the client's on both ways.
    local client = pinfo.port_type == 2 and tostring(is_reply and pinfo.dst or pinfo.src) or "udp"
    local key = table.concat({ client, client_port, bit.band(command, 0x7fff), sequence }, "/")
    local me = message_key(pinfo, tvb)
    if not pinfo.visited then
        if not is_reply then
            open_requests[key] = { frame = pinfo.number, time = pinfo.rel_ts, message = me }
        elseif open_requests[key] then
            requests_of[me] = open_requests[key]
            replies_of[open_requests[key].message] = pinfo.number
        end
    end
    local request, reply_frame = requests_of[me], replies_of[me]
    if is_reply and request then
        tree:add(f.request_in, request.frame):set_generated()
        local seconds = pinfo.rel_ts - request.time
        local whole = math.floor(seconds)
        local span = NSTime.new(whole, math.floor((seconds - whole) * 1e9 + 0.5))
        tree:add(f.time, span):set_generated()
    elseif not is_reply and reply_frame then
        tree:add(f.response_in, reply_frame):set_generated()
    end
end

local function add_header(tvb, tree)
    local pattern = tree:add_le(f.pattern, tvb(0, 4))
    if tvb(0, 4):le_uint() ~= start_pattern then
        pattern:add_proto_expert_info(e.pattern)
    end
    for index, name in ipairs({ "version", "format", "device", "service" }) do
        local range = tvb(3 + index, 1)
        local item = tree:add(f[name], range)
        if own[name] and range:uint() ~= own[name] then
            item:add_proto_expert_info(e.number, string.format("%s %d instead of %d", name, range:uint(), own[name]))
        elseif name == "format" then
            for _, size in ipairs({ "64", "32", "16", "8" }) do
                item:add(f["format" .. size], range)
            end
        end
    end
    tree:add_le(f.command, tvb(8, 2))
    tree:add_le(f.reply, tvb(8, 2))
    local status = tree:add(f.status, tvb(10, 1))
    local is_reply = bit.band(tvb(8, 2):le_uint(), reply_bit) ~= 0
    if is_reply and tvb(10, 1):uint() ~= 1 then
        local word = statuses[tvb(10, 1):uint()] or "unknown status"
        status:add_proto_expert_info(e.status, word)
    end
    tree:add(f.command_version, tvb(11, 1))
    tree:add_le(f.sequence, tvb(12, 4))
    tree:add_le(f.length, tvb(16, 4))
    return is_reply
end

-- Wireshark's own dissector writes its name over ours, and raises an error where the text is no XML after all.
local function add_xml(tvb, pinfo, root)
    local protocol, info = tostring(pinfo.cols.protocol), tostring(pinfo.cols.info)
    pcall(xml.call, xml, tvb, pinfo, root)
    pinfo.cols.protocol:set(protocol)
    pinfo.cols.info:set(info)
end

local function add_text(tvb, pinfo, root, tree, is_whole)
    local size = tvb:len()
    if is_whole and tvb(size - 1, 1):uint() ~= 0 then
        tree:add_proto_expert_info(e.text)
    end
    local document = tvb:raw():find("\0", 1, true)
    local length = document and document - 1 or size
    if length > 0 then
        tree:add(f.text, tvb(0, length))
        if is_whole and tvb(0, 1):uint() == string.byte("<") then
            add_xml(tvb(0, length):tvb(), pinfo, root)
        end
    end
end

-- Walks the sections as the format and their counts say, within the bytes that are there.
local function add_sections(tvb, pinfo, root, tree, format, is_archive)
    local offset = header_size
    for _, section in ipairs(sections) do
        if bit.band(format, section.bit) ~= 0 then
            local left = tvb:len() - offset
            if left < 4 then
                tree:add_proto_expert_info(e.length, "no room for the count of the " .. section.name)
                return
            end
            local count = tvb(offset, 4):le_uint()
            local present = math.min(count, left - 4)
            local item = tree:add(f.section, tvb(offset, 4 + present)):set_text(section.name)
            local counted = item:add_le(f.count, tvb(offset, 4))
            if present < count then
                counted:add_proto_expert_info(e.length, string.format("%d bytes announced, %d there", count, left - 4))
            end
            if present > 0 and section.size == 1 and not is_archive then
                add_text(tvb(offset + 4, present):tvb(), pinfo, root, item, present == count)
            elseif present > 0 then
                item:add(f.data, tvb(offset + 4, present))
            end
            offset = offset + 4 + present
        end
    end
    if offset < tvb:len() then
        tree:add_proto_expert_info(e.length, string.format("%d bytes behind the last section", tvb:len() - offset))
    end
end

local function add_message(tvb, pinfo, root)
    pinfo.cols.protocol = "TARVEL"
    local tree = root:add(tarvel, tvb())
    if tvb:len() < header_size then
        pinfo.cols.info = string.format("%d bytes, too short for a header", tvb:len())
        tree:add_proto_expert_info(e.short)
        return tvb:len()
    end
    local is_reply = add_header(tvb, tree)
    local command, sequence = tvb(8, 2):le_uint(), tvb(12, 4):le_uint()
    local kind = is_reply and "Reply" or "Request"
    local outcome = is_reply and ": " .. (statuses[tvb(10, 1):uint()] or "unknown status") or ""
    tree:append_text(string.format(", %s, %s%s", kind, command_name(command), outcome))
    pinfo.cols.info = string.format("%s, %s%s, sequence 0x%x", kind, command_name(command), outcome, sequence)
    link(tvb, pinfo, tree, is_reply, command, sequence)
    local announced, present = payload_length(tvb, 0), tvb:len() - header_size
    if announced > tarvel.prefs.largest and present >= tarvel.prefs.largest then
        tree:add_proto_expert_info(e.huge, string.format("%d bytes announced", announced))
    elseif announced ~= present then
        tree:add_proto_expert_info(e.length, string.format("%d bytes of payload announced, %d there", announced, present))
    end
    if announced > 0 then
        add_sections(tvb, pinfo, root, tree, tvb(5, 1):uint(), archives[command])
    end
    return tvb:len()
end

function tarvel.dissector(tvb, pinfo, root)
    if pinfo.port_type == 2 then
        dissect_tcp_pdus(tvb, root, header_size, pdu_length, add_message)
        return tvb:len()
    end
    return add_message(tvb, pinfo, root)
end

local port = 0

local function register()
    for _, name in ipairs({ "tcp.port", "udp.port" }) do
        local ports = DissectorTable.get(name)
        if port ~= 0 then
            ports:remove(port, tarvel)
        end
        ports:add(tarvel.prefs.port, tarvel)
    end
    port = tarvel.prefs.port
end

tarvel.prefs_changed = register
register()
