// SPDX-License-Identifier: Apache-2.0
//
// Bodies of message types 23 to 34, 37 and 38: the body head, then data_size raw bytes. Seven
// categories share one pattern; browser and enterprise do not take the payload back.
#include "mdm_ipc_handlers.hpp"
#include "mdm_log.hpp"

namespace mdm {
namespace {

template <class Out, class Body>
void write_payload(Out &out, const Body &info, const char *path)
{
    if (info.data_size >= 1) {
        out.bytes(info.data, info.data_size, path);
    }
}

template <class In, class Body>
void read_payload(In &in, Body &info, const char *path)
{
    info.data = info.data_size >= 1 ? in.bytes(info.data_size, path) : nullptr;
}

// The receiver learns the payload's size, never its bytes: `data` stays as it was and the
// payload is not consumed.
template <class In, class Body>
void leave_payload(In & /*in*/, Body &info, const char * /*path*/)
{
    if (info.data_size < 1) {
        info.data = nullptr;
    }
}

template <class Body>
void release_payload(Body &info)
{
    info.data_size = 0;
    release_data(info);
}

}  // namespace

// A line of these handlers carries the category's line below; the function name tells them apart.
// The size handler trusts the sign of `data_size`: a negative one counts fewer bytes than the
// head that is written. The free handler logs its exit line for a null body only.
#define SINGLE_LIST_HANDLERS(category, receive)                                    \
    static constexpr auto category##_head_fields = MDM_BODY_HEAD_FIELDS(category); \
                                                                                   \
    uint32_t _size_of_##category(mdm_body_t *body)                                 \
    {                                                                              \
        MDM_ENTER();                                                               \
        MDM_ASSERT(body != nullptr, 0);                                            \
        const auto data_size = static_cast<uint32_t>(body->category.data_size);    \
        return MDM_EXIT(body_head_size + data_size);                               \
    }                                                                              \
                                                                                   \
    template <class Out>                                                           \
    static bool _set_##category(Out &out, const mdm_##category##_info_t *info)     \
    {                                                                              \
        MDM_ENTER();                                                               \
        MDM_ASSERT(out &&info != nullptr, false);                                  \
        out.body_head(*info, category##_head_fields);                              \
        write_payload(out, *info, #category ".data");                              \
        return MDM_EXIT(true);                                                     \
    }                                                                              \
                                                                                   \
    template <class In>                                                            \
    static bool _get_##category(In &in, mdm_##category##_info_t *info)             \
    {                                                                              \
        MDM_ENTER();                                                               \
        MDM_ASSERT(in &&info != nullptr, false);                                   \
        in.body_head(*info, category##_head_fields);                               \
        receive(in, *info, #category ".data");                                     \
        return MDM_EXIT(true);                                                     \
    }                                                                              \
                                                                                   \
    static const char *unsound_part(const mdm_##category##_info_t &info)           \
    {                                                                              \
        constexpr auto paths = MDM_PAYLOAD_PATHS(category);                        \
        return unsound_bytes(info.data_size, info.data, paths);                    \
    }                                                                              \
                                                                                   \
    MDM_HANDLERS(category)                                                         \
                                                                                   \
    void _free_##category(mdm_body_t *body)                                        \
    {                                                                              \
        if (body == nullptr) {                                                     \
            return MDM_EXIT();                                                     \
        }                                                                          \
        release_payload(body->category);                                           \
    }

SINGLE_LIST_HANDLERS(browser, leave_payload)
SINGLE_LIST_HANDLERS(date_time, read_payload)
SINGLE_LIST_HANDLERS(remote, read_payload)
SINGLE_LIST_HANDLERS(vpn, read_payload)
SINGLE_LIST_HANDLERS(firewall, read_payload)
SINGLE_LIST_HANDLERS(res, read_payload)
SINGLE_LIST_HANDLERS(enterprise, leave_payload)

}  // namespace mdm
