// SPDX-License-Identifier: Apache-2.0
#include "support/handlers.hpp"

#include "ipc/category.hpp"

namespace mdm::test {

uint8_t *Handlers::set(uint8_t *position, mdm_body_t *body) const
{
    const Category category = category_of(type_);
    Writer out(position, 0, 0, category.log(Log::Function::set));
    return category.set(out, body) ? out.position() : nullptr;
}

const uint8_t *Handlers::get(mdm_body_t *body, const uint8_t *position) const
{
    const Category category = category_of(type_);
    Reader in(position, 0, category.log(Log::Function::get));
    return category.get(in, body) ? in.position() : nullptr;
}

uint32_t Handlers::size(mdm_body_t *body) const
{
    const Category category = category_of(type_);
    Lengths lengths;
    return category.row.size(lengths, category.log(Log::Function::size), body);
}

void Handlers::free(mdm_body_t *body) const
{
    const Category category = category_of(type_);
    category.row.free(category.log(Log::Function::free), body);
}

}  // namespace mdm::test
