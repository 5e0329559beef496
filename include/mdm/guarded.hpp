// SPDX-License-Identifier: Apache-2.0
/**
 * @file
 * The guarded path for C++: owners that release by themselves, results that hold a value or a
 * fault, lists as ranges and texts as views.
 *
 * The header only calls the functions of mdm/guarded.h, and all that mdm/guarded.h says holds here,
 * too. It needs C++17. With C++20 the lists are views of `<ranges>`.
 *
 * @code{.cpp}
 * #include <cstdint>
 * #include <iostream>
 * #include <vector>
 *
 * #include <mdm/guarded.hpp>
 *
 * static void show_accounts(const std::vector<std::uint8_t> &packet)
 * {
 *     const auto opened = mdm::open(packet);
 *     if (!opened) {
 *         const auto reason = mdm::describe(opened.error());
 *         std::cout << "refused: " << reason.c_str() << '\n';
 *         return;
 *     }
 *     const GList *accounts = mdm_email_accounts(opened->get());
 *     for (const auto &account :
 *          mdm::list<mdm_email_account_t>(accounts)) {
 *         std::cout << account.num0 << ' ' << mdm::text(account.str9)
 *                   << '\n';
 *     }
 * }
 *
 * int main()
 * {
 *     mdm_email_account_t account{};
 *     account.num0 = 1;
 *     account.str9 = mdm_text("Work");
 *     g_autoptr(GList) accounts = g_list_append(nullptr, &account);
 *     mdm_msg_t msg{};
 *     if (!mdm_email_set_accounts(&msg, accounts)) {
 *         return 1;
 *     }
 *     const auto sealed = mdm::seal(msg);
 *     if (!sealed) {
 *         return 1;
 *     }
 *     show_accounts({sealed->begin(), sealed->end()});
 *     show_accounts({});
 *     return 0;
 * }
 * // prints: 1 Work
 * // prints: refused: header.length at offset 0 needs 4 bytes, 0 are left
 * @endcode
 *
 * Ownership: a mdm::Message, a mdm::SealedBytes and a mdm::Description release what they own when
 * they are destroyed. They can be moved and not copied. A moved object owns nothing. A mdm::List
 * and a text own nothing: they are valid as long as the message that they come from.
 *
 * Errors and memory: nothing here throws or needs exceptions or run-time type information. Nothing
 * here allocates memory besides the functions of mdm/guarded.h.
 *
 * Thread safety: the functions keep no state. While one thread changes an object, no other thread
 * may use it. As with the logger, a thread with the asynchronous cancelability type must set the
 * deferred type first (mdm/log.h).
 */
#ifndef MDM_GUARDED_HPP
#define MDM_GUARDED_HPP

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>
#ifdef __cpp_lib_ranges
#include <ranges>
#endif

#include "mdm/guarded.h"

/** The C++ layer of the library. */
namespace mdm {
// The library's own sources have names in the namespace mdm, too, and a program may link them
// statically. The inner namespace keeps the names of this header apart from them. Programs write
// `mdm::open`.
inline namespace guarded {

/** Closes an opened message, for #Message. */
struct CloseMessage {
    /** Calls ipc_close(). @param msg  a message that ipc_open() returned. */
    void operator()(mdm_msg_t *msg) const noexcept { ipc_close(msg); }
};

/** Releases a block of the library, for the owners of this header. */
struct FreeBlock {
    /** Calls g_free(). @param block  a block from GLib's allocator. */
    void operator()(void *block) const noexcept { g_free(block); }
};

/**
 * The owner of an opened message. It closes the message with ipc_close(). It can also be made of a
 * pointer that ipc_open() has returned.
 */
using Message = std::unique_ptr<mdm_msg_t, CloseMessage>;

/** The owner of the bytes of a sealed message: a contiguous range of constant bytes. */
class SealedBytes {
public:
    /** No bytes. */
    SealedBytes() noexcept = default;
    /**
     * Takes over bytes that ipc_seal() has returned.
     *
     * @param bytes  the bytes.
     * @param size   how many they are.
     */
    SealedBytes(std::uint8_t *bytes, std::size_t size) noexcept : bytes_(bytes), size_(size) {}
    /** Takes over the bytes. @param other  the source, which is left without bytes. */
    SealedBytes(SealedBytes &&other) noexcept
        : bytes_(std::move(other.bytes_)), size_(std::exchange(other.size_, 0))
    {
    }
    /** Releases its bytes and takes over others; does nothing for itself.
     * @param other  the source, which is left without bytes. @return This object. */
    SealedBytes &operator=(SealedBytes &&other) noexcept
    {
        bytes_ = std::move(other.bytes_);
        size_ = std::exchange(other.size_, 0);
        return *this;
    }
    SealedBytes(const SealedBytes &) = delete;
    SealedBytes &operator=(const SealedBytes &) = delete;
    /** Releases the bytes with g_free(). */
    ~SealedBytes() = default;

    /** @return The first byte; null if there is none. */
    const std::uint8_t *data() const noexcept { return bytes_.get(); }
    /** @return The number of bytes. */
    std::size_t size() const noexcept { return size_; }
    /** @return Whether there are no bytes. */
    bool empty() const noexcept { return size_ == 0; }
    /** @return The beginning of the range. */
    const std::uint8_t *begin() const noexcept { return data(); }
    /** @return The end of the range. */
    const std::uint8_t *end() const noexcept { return data() + size_; }
    /** Gives the bytes away. @return The bytes, which the caller releases with g_free(). */
    [[nodiscard]] std::uint8_t *release() noexcept
    {
        size_ = 0;
        return bytes_.release();
    }

private:
    std::unique_ptr<std::uint8_t, FreeBlock> bytes_;
    std::size_t size_ = 0;
};

/**
 * A value, or the fault of a refusal.
 *
 * A value that open() or seal() returns is never empty. A result whose value was moved away still
 * has a value, an empty one.
 */
template <class T>
class [[nodiscard]] Result {
public:
    /** A result with a value. @param value  the value. */
    explicit Result(T value) noexcept : value_(std::move(value)) {}
    /** A refusal. @param fault  the reason. Its path must not be null. */
    explicit Result(const ipc_fault_t &fault) noexcept : fault_(fault) {}

    /** @return Whether there is a value. */
    bool has_value() const noexcept { return fault_.path == nullptr; }
    /** @return Whether there is a value. */
    explicit operator bool() const noexcept { return has_value(); }

    /** @return The value; an empty one if there is none. */
    T &operator*() &noexcept { return value_; }
    /** @return The value; an empty one if there is none. */
    const T &operator*() const &noexcept { return value_; }
    /** @return The value, to be moved from; an empty one if there is none. */
    T &&operator*() &&noexcept { return std::move(value_); }
    /** @return The value; an empty one if there is none. */
    T *operator->() noexcept { return &value_; }
    /** @return The value; an empty one if there is none. */
    const T *operator->() const noexcept { return &value_; }

    /** @return The reason of the refusal. Zero, with a null path, if there is a value. */
    const ipc_fault_t &error() const noexcept { return fault_; }

private:
    T value_{};
    ipc_fault_t fault_{};
};

/**
 * A view of a text of a message.
 *
 * @param string  a string; may be null.
 *
 * @return The string without its terminator. For null an empty view whose data() is null, unlike
 *         that of an empty string.
 */
constexpr std::string_view text(const char *string) noexcept
{
    return string != nullptr ? std::string_view(string) : std::string_view();
}

/** The owner of the sentence that describes a fault. */
class Description {
public:
    /** Takes over a sentence. @param sentence  what ipc_fault_describe() has returned. */
    explicit Description(char *sentence) noexcept : sentence_(sentence) {}

    /** @return The sentence, which lives as long as this object; null if it was moved away. */
    const char *c_str() const noexcept { return sentence_.get(); }
    /** @return The sentence, which lives as long as this object. */
    std::string_view view() const noexcept { return text(sentence_.get()); }

private:
    std::unique_ptr<char, FreeBlock> sentence_;
};

/**
 * Describes a fault with ipc_fault_describe().
 *
 * @param fault  the fault of a refusal.
 *
 * @return One sentence, without a full stop. Without memory for it the call ends the process.
 */
[[nodiscard]] inline Description describe(const ipc_fault_t &fault) noexcept
{
    return Description(ipc_fault_describe(&fault));
}

/**
 * Opens received bytes with ipc_open().
 *
 * More than 4294967295 bytes are refused, because ipc_open() cannot take that number. The fault has
 * the path "header.length", as for any false length. The log has no line about this refusal.
 *
 * @param bytes  the received bytes; not changed and not kept. Null is refused.
 * @param size   the exact number of bytes.
 *
 * @return The message, or the fault.
 */
inline Result<Message> open(const void *bytes, std::size_t size) noexcept
{
    constexpr std::uint64_t most = std::numeric_limits<std::uint32_t>::max();
    const auto *first = static_cast<const std::uint8_t *>(bytes);
    const std::uint64_t length = size;
    if (first != nullptr && length > most) {
        std::uint64_t announced = 0;
        for (int i = 3; i >= 0; --i) {
            announced = announced * 256 + first[i];
        }
        announced += 8;  // the bytes that the length field does not count
        const auto needed = static_cast<std::uint32_t>(announced < most ? announced : most);
        return Result<Message>(ipc_fault_t{0, needed, most, "header.length"});
    }
    ipc_fault_t fault{};
    Message msg(ipc_open(first, static_cast<std::uint32_t>(length), &fault));
    return msg != nullptr ? Result<Message>(std::move(msg)) : Result<Message>(fault);
}

/** The type of the elements of a container, an array or a view that std::data() takes. */
template <class Range>
using ElementOf =
    std::remove_cv_t<std::remove_pointer_t<decltype(std::data(std::declval<const Range &>()))>>;

/** Whether a type stands for a byte: std::byte, or an integer of one byte. */
template <class T>
inline constexpr bool is_byte = std::is_same_v<T, std::byte> ||
                                (std::is_integral_v<T> && sizeof(T) == 1);

/**
 * Opens the bytes of a container, an array or a view with ipc_open(), as the other overload does.
 *
 * @tparam Bytes  any type that std::data() and std::size() take, with elements of one byte:
 *                std::uint8_t, char, std::byte. An array counts as a whole, and a string literal
 *                with its terminator.
 * @param bytes  exactly the received bytes; not changed and not kept.
 *
 * @return The message, or the fault.
 */
template <class Bytes, class Element = ElementOf<Bytes>, class = std::enable_if_t<is_byte<Element>>>
Result<Message> open(const Bytes &bytes) noexcept(noexcept(std::data(bytes), std::size(bytes)))
{
    return open(std::data(bytes), std::size(bytes));
}

/**
 * Turns a message into bytes with ipc_seal().
 *
 * @param msg  the message. Some categories store the computed `data_size` in the body. If the call
 *             refuses, the message is unchanged.
 *
 * @return The bytes, or the fault.
 */
inline Result<SealedBytes> seal(mdm_msg_t &msg) noexcept
{
    ipc_fault_t fault{};
    std::uint32_t size = 0;
    std::uint8_t *bytes = ipc_seal(&msg, &size, &fault);
    return bytes != nullptr ? Result<SealedBytes>(SealedBytes(bytes, size))
                            : Result<SealedBytes>(fault);
}

/**
 * An iterator over the elements of a GList.
 *
 * @tparam T  the type of the elements, as for list().
 */
template <class T>
class ListIterator {
    static_assert(std::is_trivially_copyable_v<T> &&
                      (std::is_class_v<T> || std::is_same_v<T, std::uint32_t>),
                  "an element is a record, a std::uint32_t or a std::string_view");
    static constexpr bool is_text = std::is_same_v<T, std::string_view>;

    // Holds the view that operator->() has made.
    class TextPointer {
    public:
        explicit TextPointer(std::string_view view) noexcept : view_(view) {}
        const std::string_view *operator->() const noexcept { return &view_; }

    private:
        std::string_view view_;
    };

public:
    using value_type = T;                   /**< The type of an element. */
    using difference_type = std::ptrdiff_t; /**< The type of a distance. */
    /** A constant reference to a record or a number, or a view of a string. */
    using reference = std::conditional_t<is_text, T, const T &>;
    /** The type that operator->() returns. */
    using pointer = std::conditional_t<is_text, TextPointer, const T *>;
    using iterator_concept = std::forward_iterator_tag; /**< The category in C++20. */
    /** The category in C++17. There, the references of a forward iterator refer to objects. */
    using iterator_category =
        std::conditional_t<is_text, std::input_iterator_tag, std::forward_iterator_tag>;

    /** The end of every list. */
    ListIterator() noexcept = default;
    /** @param cell  the cell of the element; null is the end. */
    explicit ListIterator(const GList *cell) noexcept : cell_(cell) {}

    /** @return The element. */
    reference operator*() const noexcept
    {
        if constexpr (is_text) {
            return text(static_cast<const char *>(cell_->data));
        } else {
            return *static_cast<const T *>(cell_->data);
        }
    }
    /** @return A pointer to the element. */
    pointer operator->() const noexcept
    {
        if constexpr (is_text) {
            return TextPointer(**this);
        } else {
            return &**this;
        }
    }
    /** Goes on to the next element. @return This iterator. */
    ListIterator &operator++() noexcept
    {
        cell_ = cell_->next;
        return *this;
    }
    /** Goes on to the next element. @return The iterator as it was. */
    ListIterator operator++(int) noexcept  // NOLINT(cert-dcl21-cpp): C++20 wants no constant
    {
        const ListIterator before = *this;
        ++*this;
        return before;
    }
    /** @param left  an iterator. @param right  another. @return Whether they are at one cell. */
    friend bool operator==(ListIterator left, ListIterator right) noexcept
    {
        return left.cell_ == right.cell_;
    }
    /** @param left  an iterator. @param right  another. @return Whether they are at two cells. */
    friend bool operator!=(ListIterator left, ListIterator right) noexcept
    {
        return !(left == right);
    }

private:
    const GList *cell_ = nullptr;
};

/**
 * A range of the elements of a GList. It refers to the cells and owns nothing: copies refer to the
 * same cells.
 *
 * @tparam T  the type of the elements, as for list().
 */
template <class T>
class List {
public:
    using iterator = ListIterator<T>;       /**< The iterator. */
    using const_iterator = ListIterator<T>; /**< The same: the elements are constant. */

    /** The empty list. */
    List() noexcept = default;
    /** @param cell  the first cell; null is the empty list. */
    explicit List(const GList *cell) noexcept : cell_(cell) {}

    /** @return The iterator at the first element. */
    iterator begin() const noexcept { return iterator(cell_); }
    /** @return The end of the list. */
    iterator end() const noexcept { return iterator(); }
    /** @return Whether there is no element. */
    bool empty() const noexcept { return cell_ == nullptr; }

private:
    const GList *cell_ = nullptr;
};

/**
 * Makes a range of a list of a message.
 *
 * @tparam T    the type of the elements: a record, std::uint32_t, or std::string_view for a list of
 *              strings. The body's header says what a list holds.
 * @param cell  the first cell; null is the empty list. No element of records or numbers may be
 *              null. A null string is a view whose data() is null, as text() makes it.
 *
 * @return The range, from the given cell on.
 */
template <class T>
List<T> list(const GList *cell) noexcept
{
    return List<T>(cell);
}

}  // namespace guarded
}  // namespace mdm

#ifdef __cpp_lib_ranges
template <class T>
inline constexpr bool std::ranges::enable_borrowed_range<mdm::List<T>> = true;
template <class T>
inline constexpr bool std::ranges::enable_view<mdm::List<T>> = true;
#endif

#endif
