// SPDX-License-Identifier: Apache-2.0
//
// The constants and the value classes serve static initialisers: this program's, those of a library
// that it links, and those of a library that it loads later.
// usage: static-init-test LIBRARY_TO_LOAD
#include <cstdio>
#include <cstdlib>
#include <string>

#include <dlfcn.h>

#include "mdm/device_policy_manager.hpp"

using DevicePolicyManager::DeviceInventoryCallHistoryEvent;
using namespace DevicePolicyManager::ServerInfo;

extern "C" {

// Functions of the linked library; the loaded one has its own.
const DeviceInventoryCallHistoryEvent *event_built_at_load();
const std::string *smtp_protocol_of_the_library();

}  // extern "C"

namespace {

const std::string joined = SMTP_PROTOCOL + " " + POP3_PROTOCOL + " " + IMAP4_PROTOCOL;
const DeviceInventoryCallHistoryEvent empty;

void check(bool condition, const char *promise)
{
    if (!condition) {
        std::fprintf(stderr, "%s\n", promise);
        std::exit(EXIT_FAILURE);
    }
}

void check_event(const DeviceInventoryCallHistoryEvent &event)
{
    check(event.str5.value == "smtp" && !event.str5.is_set, "SMTP_PROTOCOL was there");
    check(event.str6.value == "pop3" && !event.str6.is_set, "POP3_PROTOCOL was there");
    check(event.str7.value == "imap4" && event.str7.is_set, "IMAP4_PROTOCOL was there");
    check(event.str8.value.empty() && !event.details12.is_set, "the event was empty before");
}

template <class Function>
Function *find(void *library, const char *name)
{
    auto *function = reinterpret_cast<Function *>(dlsym(library, name));
    check(function != nullptr, name);
    return function;
}

}  // namespace

int main(int argc, char **argv)
{
    check(argc == 2, "usage: static-init-test LIBRARY_TO_LOAD");
    check(joined == "smtp pop3 imap4", "the constants served this program's initialiser");
    check(empty.num0.value == 0 && !empty.num0.is_set && empty.str5.value.empty(),
          "this program's event is empty");

    check_event(*event_built_at_load());
    check(smtp_protocol_of_the_library() == &SMTP_PROTOCOL, "linked: one constant a process");

    void *library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    check(library != nullptr, "the library can be loaded");
    const auto *loaded = find<decltype(event_built_at_load)>(library, "event_built_at_load")();
    check(loaded != event_built_at_load(), "the loaded library has an event of its own");
    check_event(*loaded);
    const auto *constant =
        find<decltype(smtp_protocol_of_the_library)>(library, "smtp_protocol_of_the_library")();
    check(constant == &SMTP_PROTOCOL, "loaded: one constant a process");
    check(dlclose(library) == 0, "the library can be unloaded");
    check(SMTP_PROTOCOL == "smtp", "the constants outlive it");
    return EXIT_SUCCESS;
}
