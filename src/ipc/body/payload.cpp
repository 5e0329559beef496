// SPDX-License-Identifier: Apache-2.0
#include "ipc/body/payload.hpp"

namespace mdm {

const char *validate_payload(bool is_announced, const void *data, Names names)
{
    if (is_announced == (data != nullptr)) {
        return nullptr;
    }
    return is_announced ? names.data() : names.data_size();
}

const char *validate_nothing(const void *data, Names names)
{
    return validate_payload(false, data, names);
}

const char *validate_list(bool is_announced, const void *data, Names names)
{
    return is_announced ? nullptr : validate_nothing(data, names);
}

const char *validate_bytes(int32_t size, const void *data, Names names)
{
    return size < 0 ? names.data_size() : validate_payload(size != 0, data, names);
}

}  // namespace mdm
