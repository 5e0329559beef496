// SPDX-License-Identifier: Apache-2.0
//
// The lists that a body holds in memory.
//
// Loops and releases begin at the list's first element, whichever cell is given. The count on the
// wire is g_list_length() of the given cell, null elements included.
#pragma once

#include <cstdint>

#include <glib.h>

namespace mdm {

template <class Element, bool ends_at_null>
class ListRange {
public:
    struct End {};

    class Iterator {
    public:
        explicit Iterator(GList *cell) : cell_(cell) {}
        Element *operator*() const { return static_cast<Element *>(cell_->data); }
        Iterator &operator++()
        {
            cell_ = cell_->next;
            return *this;
        }
        bool operator!=(End /*end*/) const
        {
            return cell_ != nullptr && !(ends_at_null && cell_->data == nullptr);
        }

    private:
        GList *cell_;
    };

    explicit ListRange(GList *list) : list_(list) {}
    Iterator begin() const { return Iterator(g_list_first(list_)); }
    End end() const { return {}; }

private:
    GList *list_;
};

// A body keeps its list in a void pointer, so these functions take one.
template <class Element>
ListRange<Element, false> elements(void *list)
{
    return ListRange<Element, false>(static_cast<GList *>(list));
}

template <class Element>
ListRange<Element, true> elements_before_null(void *list)
{
    return ListRange<Element, true>(static_cast<GList *>(list));
}

inline uint32_t length_of(void *list)
{
    return g_list_length(static_cast<GList *>(list));
}

bool has_null_element(void *list);

inline void release_cells(void *list)
{
    g_list_free(g_list_first(static_cast<GList *>(list)));
}

// Releases the elements, then the cells. The elements own no further memory.
inline void release_elements(void *list)
{
    g_list_free_full(g_list_first(static_cast<GList *>(list)), g_free);
}

}  // namespace mdm
