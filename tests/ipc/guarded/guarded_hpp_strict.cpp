// SPDX-License-Identifier: Apache-2.0
//
// Every template of mdm/guarded.hpp, for a build without exceptions and run-time type information.
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "mdm/guarded.hpp"

template class mdm::Result<mdm::Message>;
template class mdm::Result<mdm::SealedBytes>;
template class mdm::List<mdm_email_account_t>;
template class mdm::List<std::string_view>;
template class mdm::ListIterator<mdm_email_account_t>;
template class mdm::ListIterator<std::string_view>;

template mdm::List<mdm_email_account_t> mdm::list(const GList *) noexcept;
template mdm::Result<mdm::Message> mdm::open(const std::array<std::byte, 40> &) noexcept;
template mdm::Result<mdm::Message> mdm::open(const std::uint8_t (&)[40]) noexcept;
