// SPDX-License-Identifier: Apache-2.0
//
// The guarded path from C++: seals a list of two mail accounts, opens the bytes as a receiver does,
// and prints the accounts.
#include <iostream>
#include <string_view>

#include <mdm/guarded.hpp>

namespace {

int refuse(const ipc_fault_t &fault)
{
    std::cerr << "refused: " << mdm::describe(fault).view() << '\n';
    return 1;
}

std::string_view text_or_dash(const char *string)
{
    return string != nullptr ? mdm::text(string) : "-";
}

int show_accounts(const mdm::SealedBytes &bytes)
{
    const auto opened = mdm::open(bytes);
    if (!opened) {
        return refuse(opened.error());
    }
    const mdm_msg_t &msg = **opened;
    std::cout << bytes.size() << " bytes from " << text_or_dash(msg.hdr_text) << '\n';
    for (const auto &account : mdm::list<mdm_email_account_t>(mdm_email_accounts(&msg))) {
        std::cout << account.num0 << ' ' << text_or_dash(account.str9) << ' '
                  << text_or_dash(account.str10) << '\n';
    }
    return 0;
}

}  // namespace

int main()
{
    mdm_email_account_t work{};
    work.num0 = 1;
    work.str9 = mdm_text("Work");
    work.str10 = mdm_text("agent@example.com");
    mdm_email_account_t home{};
    home.num0 = 2;
    home.str9 = mdm_text("Home");
    g_autoptr(GList) accounts = nullptr;
    accounts = g_list_append(accounts, &work);
    accounts = g_list_append(accounts, &home);

    mdm_msg_t msg{};
    msg.hdr_text = mdm_text("com.example.agent");
    if (!mdm_email_set_accounts(&msg, accounts)) {
        return 1;
    }
    const auto sealed = mdm::seal(msg);
    return sealed ? show_accounts(*sealed) : refuse(sealed.error());
}
