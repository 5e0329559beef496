// SPDX-License-Identifier: Apache-2.0
#include "support/handlers.hpp"

#include <stdexcept>

#include <gtest/gtest.h>

#include "ipc/category.hpp"
#include "support/allocation_trace.hpp"

namespace mdm::test {

namespace {

Category row_of(uint8_t type)
{
    const Category category = category_of(type);
    if (category.row.size == nullptr) {
        throw std::invalid_argument("MDM_CATEGORIES has no row for message type " +
                                    std::to_string(type));
    }
    return category;
}

}  // namespace

Handler::operator Origin() const
{
    const CategoryFormat *format = format_of(type_);
    if (format == nullptr) {
        throw std::invalid_argument("tests/support/format.cpp has no entry for message type " +
                                    std::to_string(type_));
    }
    return {std::string(prefix_) + format->name, format->file};
}

uint32_t SizeOf::operator()(mdm_body_t *body) const
{
    const Category category = row_of(type_);
    Lengths lengths;
    return category.row.size(lengths, category.log(Log::Function::size), body);
}

uint8_t *Set::operator()(uint8_t *position, mdm_body_t *body) const
{
    const Category category = row_of(type_);
    Writer out(position, 0, 0, category.log(Log::Function::set));
    return category.set(out, body) ? out.position() : nullptr;
}

const uint8_t *Get::operator()(mdm_body_t *body, const uint8_t *position) const
{
    const Category category = row_of(type_);
    Reader in(position, 0, category.log(Log::Function::get));
    return category.get(in, body) ? in.position() : nullptr;
}

void Free::operator()(mdm_body_t *body) const
{
    const Category category = row_of(type_);
    category.row.free(category.log(Log::Function::free), body);
}

Bytes Handlers::write(mdm_body_t *body) const
{
    Bytes buffer(4096);
    const uint8_t *end = set(buffer.data(), body);
    EXPECT_NE(end, nullptr);
    buffer.resize(end == nullptr ? 0 : static_cast<size_t>(end - buffer.data()));
    return buffer;
}

size_t Handlers::read(mdm_body_t *body, const Bytes &bytes) const
{
    const auto copy = exact_copy(bytes);
    const uint8_t *end = get(body, copy.get());
    EXPECT_NE(end, nullptr);
    return end == nullptr ? 0 : static_cast<size_t>(end - copy.get());
}

std::vector<const void *> Handlers::release(mdm_body_t *body) const
{
    AllocationTrace trace;
    free(body);
    trace.stop();
    return trace.released();
}

Handlers handlers_of(std::string_view category)
{
    for (const CategoryFormat &format : category_formats()) {
        if (format.name == category) {
            return Handlers(format.first_type());
        }
    }
    throw std::invalid_argument("no category: " + std::string(category));
}

}  // namespace mdm::test
