// SPDX-License-Identifier: Apache-2.0
//
// What the mail categories, eas and email, share. Each has four forms: an account, some settings of
// an account, a count and accounts, a number with a text; each has its own records and field lists.
#pragma once

#include "mdm_wire.hpp"

namespace mdm {

enum class MailShape { account, settings, accounts, value };

// The field list of each form, and the path of a list. An account in a list may differ from one on
// its own.
template <class Account, class Settings, class Element, class Value>
struct MailForms {
    const char *accounts;
    Account account;
    Settings settings;
    Element element;
    Value value;
};

template <class Account, class Settings, class Element, class Value>
MailForms(const char *, Account, Settings, Element, Value)
    -> MailForms<Account, Settings, Element, Value>;

template <class Out, class Forms>
void write_mail(Out &out, MailShape shape, void *data, const Forms &forms)
{
    switch (shape) {
    case MailShape::account:
        return out.record(data, forms.account);
    case MailShape::settings:
        return out.record(data, forms.settings);
    case MailShape::accounts:
        return out.records(data, forms.accounts, forms.element);
    case MailShape::value:
        return out.record(data, forms.value);
    }
}

template <class In, class Forms>
void *read_mail(In &in, MailShape shape, const Forms &forms)
{
    switch (shape) {
    case MailShape::account:
        return in.record(forms.account);
    case MailShape::settings:
        return in.record(forms.settings);
    case MailShape::accounts:
        return in.records(forms.accounts, forms.element);
    case MailShape::value:
        break;
    }
    return in.record(forms.value);
}

}  // namespace mdm
