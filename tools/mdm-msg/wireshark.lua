-- The fields that Wireshark knows. A field of the message has the name of its path. The count of a
-- list ends in ".count", the length of a text whose bytes are not all there in ".length". A path
-- with two kinds ends in the member of the C union. A filter has "mdm." in front of the name.

local protocol = Proto("mdm", "Device management message")

local types = {
    u8 = ftypes.UINT8, u32 = ftypes.UINT32, i32 = ftypes.INT32, count = ftypes.INT32,
    unsigned_count = ftypes.UINT32, str = ftypes.STRING, bytes = ftypes.BYTES,
    reserved = ftypes.BYTES,
}
local members = {u8 = ".byte", u32 = ".number", i32 = ".number", str = ".text"}

local category_names = {}  -- by message type
local category_of = {}
for number = first_type, last_type do
    category_names[number] = "none"
end
for _, category in ipairs(categories) do
    for _, number in ipairs(category.types) do
        category_names[number] = category.name
        category_of[number] = category
    end
end

-- Calls visit(field) for each of the fields, and for those of lists and variants among them.
local function for_each_field(list, visit)
    for _, field in ipairs(list) do
        if field.path then
            visit(field)
        end
        for_each_field(field.elements or {}, visit)
        for _, variant in ipairs(field) do
            for_each_field(variant.fields, visit)
        end
    end
end

local function for_each_field_of_all(visit)
    for_each_field(header, visit)
    for _, category in ipairs(categories) do
        for_each_field(category.head, visit)
        for _, form in ipairs(category.forms) do
            for_each_field(form.fields, visit)
        end
    end
end

local kinds_of = {}  -- by path: the kinds that are no counts
for_each_field_of_all(function(field)
    if members[field.kind] then
        local kinds = kinds_of[field.path] or {}
        kinds[members[field.kind]] = true
        kinds_of[field.path] = kinds
    end
end)

local function has_two_kinds(path)
    local kinds = kinds_of[path]
    return kinds and next(kinds, next(kinds)) ~= nil
end

local fields = {}  -- by name
local function declare(name, kind, names)
    if not fields[name] then
        local is_number = types[kind] ~= ftypes.BYTES and types[kind] ~= ftypes.STRING
        fields[name] = ProtoField.new(name, "mdm." .. name, types[kind], names,
                                      is_number and base.DEC or base.NONE)
    end
    return fields[name]
end

for_each_field_of_all(function(field)
    local path, kind = field.path, field.kind
    if kind == "count" or kind == "unsigned_count" then
        field.count = declare(path .. ".count", kind)
    elseif kind ~= "array" then
        local member = has_two_kinds(path) and members[kind] or ""
        field.value = declare(path .. member, kind,
                              path == "header.type" and category_names or nil)
        if kind == "str" then
            field.length = declare(path .. ".length", "u32")
        end
    end
end)

local form_field = declare("form", "str")
local padding_field = declare("padding", "bytes")
local rest_field = declare("rest", "bytes")
local fault_field = declare("fault", "str")
local fault_fields = {
    path = declare("fault.path", "str"),
    offset = declare("fault.offset", "u32"),
    needed = declare("fault.needed", "u32"),
    left = declare("fault.left", "u32"),
}
protocol.fields = fields

-- Notes in Wireshark's list of expert information.
local malformed = ProtoExpert.new("mdm.malformed", "The message is malformed",
                                  expert.group.MALFORMED, expert.severity.ERROR)
local cut = ProtoExpert.new("mdm.cut", "The capture does not have the whole message",
                            expert.group.UNDECODED, expert.severity.WARN)
local padded = ProtoExpert.new("mdm.padded", "No receiver reads these bytes",
                               expert.group.UNDECODED, expert.severity.CHAT)
local negative_count = ProtoExpert.new("mdm.negative_count", "A negative count announces nothing",
                                       expert.group.PROTOCOL, expert.severity.NOTE)
local zero_in_text = ProtoExpert.new("mdm.zero_in_text",
                                     "A receiver sees no byte of the text behind the zero byte",
                                     expert.group.PROTOCOL, expert.severity.NOTE)
protocol.experts = {malformed, cut, padded, negative_count, zero_in_text}

-- Reading. A reader has the packet's bytes, the size of the message, how many bytes of it were
-- captured, the offset of the next byte, and the numbers that it has read, by path. A step that
-- cannot go on raises a table: the fault, or `is_cut` if the capture ends there.

local largest_number = 0xFFFFFFFF

local function fault(reader, path, needed)
    error({path = path, offset = reader.at, needed = math.min(needed, largest_number),
           left = reader.size - reader.at})
end

-- Whether so many bytes follow is compared before any of them is taken.
local function require_bytes(reader, path, count)
    if count > reader.size - reader.at then
        fault(reader, path, count)
    end
end

-- The range of the next bytes: at least one.
local function take(reader, path, count)
    require_bytes(reader, path, count)
    if count > reader.captured - reader.at then
        error({is_cut = true})
    end
    local range = reader.buffer(reader.at, count)
    reader.at = reader.at + count
    return range
end

-- A tree item for what the reader reads next. It reaches to the end of the message until
-- close_item() is called, so a fault within it stands in it.
local function open_item(reader, tree, label)
    if reader.at < reader.captured then
        return tree:add(reader.buffer(reader.at, reader.captured - reader.at), label)
    end
    return tree:add(label)
end

local function close_item(reader, item, begin)
    if reader.at > begin then
        item:set_len(reader.at - begin)
    end
end

local read = {}  -- the functions that read a field, by its kind
local read_fields

-- Reads so many elements, if there are bytes for them: records or texts.
local function read_elements(reader, tree, field, count)
    local elements = field.elements
    require_bytes(reader, field.path, count < 0 and largest_number or count * field.element_size)
    if not field.record then
        for i = 0, count - 1 do
            read.str(reader, tree, elements[1], "[" .. i .. "] ")
        end
        return
    end
    for i = 0, count - 1 do
        local begin = reader.at
        local item = open_item(reader, tree, field.record .. "[" .. i .. "]")
        read_fields(reader, item, elements)
        close_item(reader, item, begin)
    end
end

for kind, number_of in pairs({u8 = "le_uint", u32 = "le_uint", i32 = "le_int"}) do
    local size = kind == "u8" and 1 or 4
    read[kind] = function(reader, tree, field)
        local range = take(reader, field.path, size)
        reader.numbers[field.path] = range[number_of](range)
        tree:add_le(field.value, range)
    end
end

-- What one or more bytes of UTF-8 look like, apart from the zero byte.
local characters = {
    "^[\1-\127]+", "^[\194-\223][\128-\191]", "^\224[\160-\191][\128-\191]",
    "^[\225-\236\238\239][\128-\191][\128-\191]", "^\237[\128-\159][\128-\191]",
    "^\240[\144-\191][\128-\191][\128-\191]", "^[\241-\243][\128-\191][\128-\191][\128-\191]",
    "^\244[\128-\143][\128-\191][\128-\191]",
}

-- The text with an escape in place of each zero byte and each byte that is no UTF-8. Wireshark
-- would lose them, and bytes behind them.
local function shown(text)
    local parts = {}
    local at = 1
    while at <= #text do
        local part
        for _, character in ipairs(characters) do
            part = part or text:match(character, at)
        end
        parts[#parts + 1] = part or string.format("\\x%02x", text:byte(at))
        at = at + #(part or " ")
    end
    return table.concat(parts)
end

-- The position in a list stands in front of the item's label.
function read.str(reader, tree, field, position)
    local begin = reader.at
    local count = take(reader, field.path, 4)
    local length = count:le_uint()
    if length > reader.size - reader.at then
        tree:add_le(field.length, count):prepend_text(position or "")
        fault(reader, field.path, length)
    end
    if length == 0 then
        tree:add(field.value, count, ""):prepend_text(position or "")
        return
    end
    local text = take(reader, field.path, length):raw()
    local item = tree:add(field.value, reader.buffer(begin, 4 + length), shown(text))
    item:prepend_text(position or "")
    if text:find("\0", 1, true) then
        item:add_proto_expert_info(zero_in_text)
    end
end

-- The payload `data_size` counts bytes. A negative number of bytes is more than there can be.
function read.bytes(reader, tree, field)
    local size = reader.numbers[field.counted_by]
    tree:add(field.value, take(reader, field.path, size < 0 and largest_number or size))
end

function read.reserved(reader, tree, field)
    tree:add(field.value, take(reader, field.path, 2))
end

function read.count(reader, tree, field)
    local range = take(reader, field.path, 4)
    local item = tree:add_le(field.count, range)
    local count = range:le_int()
    if count < 0 then
        item:add_proto_expert_info(negative_count)
        return
    end
    read_elements(reader, item, field, count)
end

function read.unsigned_count(reader, tree, field)
    local range = take(reader, field.path, 4)
    local item = tree:add_le(field.count, range)
    read_elements(reader, item, field, range:le_uint())
end

-- A list without a count of its own.
function read.array(reader, tree, field)
    read_elements(reader, tree, field, reader.numbers[field.counted_by])
end

local function is_in(number, numbers)
    for _, one in ipairs(numbers) do
        if number == one or type(one) == "table" and number >= one[1] and number <= one[2] then
            return true
        end
    end
    return false
end

-- What follows depends on the number of another field.
local function read_variants(reader, tree, variants)
    for _, variant in ipairs(variants) do
        if is_in(reader.numbers[variants.selector], variant.values) then
            read_fields(reader, tree, variant.fields)
        end
    end
end

local function read_field(reader, tree, field)
    read[field.kind](reader, tree, field)
end

function read_fields(reader, tree, list, first)
    for i = first or 1, #list do
        if list[i].selector then
            read_variants(reader, tree, list[i])
        else
            read_field(reader, tree, list[i])
        end
    end
end

-- The form that the discriminator selects; the last form takes all numbers that are not listed.
local function form_of(category, discriminator)
    for _, form in ipairs(category.forms) do
        if not form.discriminators or is_in(discriminator, form.discriminators) then
            return form
        end
    end
end

local function is_announced(form, data_size)
    return not form.payload or form.payload == "if_positive" and data_size > 0
           or form.payload == "if_not_zero" and data_size ~= 0
end

local function read_body(reader, tree, category)
    read_field(reader, tree, category.head[1])
    local form = form_of(category, reader.numbers[category.name .. ".type"])
    reader.form = form.name
    read_fields(reader, tree, category.head, 2)
    if is_announced(form, reader.numbers[category.name .. ".data_size"]) then
        read_fields(reader, tree, form.fields)
    end
end

local function read_header(reader, tree)
    require_bytes(reader, "header.length", 4)
    if reader.captured < 4 then
        error({is_cut = true})
    end
    local announced = reader.buffer(0, 4):le_uint() + uncounted
    if announced ~= reader.size then
        fault(reader, "header.length", announced)
    end
    require_bytes(reader, "header.length", smallest_message)
    local item = open_item(reader, tree, "Header")
    read_field(reader, item, header[1])
    if reader.captured > reader.at then
        local number = reader.buffer(reader.at, 1):uint()
        if number < first_type or number > last_type then
            fault(reader, "header.type", 1)
        end
    end
    read_field(reader, item, header[2])
    local category = category_of[reader.numbers["header.type"]]
    reader.form = not category and "none" or nil
    read_fields(reader, item, header, 3)
    close_item(reader, item, 0)
    return category
end

local function read_message(reader, tree)
    local category = read_header(reader, tree)
    if category then
        local begin = reader.at
        local item = open_item(reader, tree, "Body")
        read_body(reader, item, category)
        close_item(reader, item, begin)
    end
    if reader.at < reader.size then
        tree:add(padding_field, take(reader, "padding", reader.size - reader.at))
            :add_proto_expert_info(padded)
    end
end

-- The sentence of the library's own log. %.0f prints numbers that are too large for %d where it has
-- 32 bits.
local function sentence(found)
    local is = found.left == 1 and "is" or "are"
    local plural = found.needed == 1 and "" or "s"
    local or_more = found.needed == largest_number and " or more" or ""
    if found.path == "header.type" then
        return "header.type at offset 4 is no message type"
    end
    if found.path == "header.length" and found.needed ~= 4 then
        if found.needed == smallest_message and found.left < smallest_message then
            return string.format("header.length: a message has %d bytes or more, %d %s there",
                                 smallest_message, found.left, is)
        end
        return string.format("header.length announces a message of %.0f byte%s%s, %d %s there",
                             found.needed, plural, or_more, found.left, is)
    end
    if found.needed == largest_number and found.path:match("%.data$") then
        return string.format("%s at offset %d has a negative size", found.path, found.offset)
    end
    return string.format("%s at offset %d needs %.0f byte%s%s, %d %s left", found.path,
                         found.offset, found.needed, plural, or_more, found.left, is)
end

-- Marks the bytes from the fault on.
local function show_fault(reader, tree, found)
    local reason = sentence(found)
    local item
    if found.offset < reader.captured then
        local range = reader.buffer(found.offset, reader.captured - found.offset)
        tree:add(rest_field, range)
        item = tree:add(fault_field, range, reason)
    else
        item = tree:add(fault_field, reason)
    end
    item:set_generated()
    item:add_proto_expert_info(malformed, reason)
    for _, name in ipairs({"path", "offset", "needed", "left"}) do
        item:add(fault_fields[name], found[name]):set_generated()
    end
end

function protocol.dissector(buffer, pinfo, root)
    local reader = {buffer = buffer, size = buffer:reported_len(),
                    captured = buffer:captured_len(), at = 0, numbers = {}}
    local tree = root:add(protocol, buffer())
    local ok, stop = pcall(read_message, reader, tree)
    local info = reader.form or category_names[reader.numbers["header.type"]] or "no message"
    if reader.form then
        tree:append_text(": " .. reader.form)
        tree:add(form_field, reader.form):set_generated()
    end
    if not ok and type(stop) ~= "table" then
        error(stop, 0)  -- a mistake in this file
    elseif not ok and stop.is_cut then
        tree:add_proto_expert_info(cut)
        info = info .. " [cut by the capture]"
    elseif not ok then
        show_fault(reader, tree, stop)
        info = info .. " [malformed]"
    end
    pinfo.cols.protocol = "MDM"
    pinfo.cols.info = info
    return reader.captured
end

DissectorTable.get("wtap_encap"):add(wtap.USER0, protocol)
