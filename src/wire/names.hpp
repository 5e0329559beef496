// SPDX-License-Identifier: Apache-2.0
//
// The names of a category: the origin of its log lines, and the paths of its head's fields.
#pragma once

#include <cstring>

namespace mdm {

// Consecutive texts, each with its terminator: the origin of the handlers' log lines, which is the
// file and the category, then the paths of the fields that most bodies begin with.
class Names {
public:
    explicit constexpr Names(const char *texts) : texts_(texts) {}

    const char *origin() const { return texts_; }
    const char *type() const { return text(2); }
    const char *param() const { return text(3); }
    const char *data_size() const { return text(4); }
    const char *data() const { return text(5); }

private:
    const char *text(int index) const { return text_at(texts_, index); }
    // Static, so that an object, which is one pointer, stays in a register.
    [[gnu::noinline]] static const char *text_at(const char *texts, int index)
    {
        for (; index > 0; --index) {
            texts += std::strlen(texts) + 1;
        }
        return texts;
    }

    const char *texts_;
};

#define MDM_NAMES(file, category)                                           \
    file "\0" category "\0" category ".type\0" category ".param\0" category \
         ".data_size\0" category ".data"

}  // namespace mdm
