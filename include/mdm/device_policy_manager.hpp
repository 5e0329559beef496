// SPDX-License-Identifier: Apache-2.0
/**
 * @file
 * Value classes that server and clients exchange, C++ only: call history, purge status, SIM
 * changes, and the names of mail protocols.
 *
 * The classes fix the order and the types of their members. Server and clients agree on the meaning
 * and the unit of each member. The name of a member is its kind and its position, from 0: `num` is
 * a 32-bit integer, `wide` a 64-bit integer, `str` a text, `details` an object of another class.
 * The codec of mdm/ipc.h does not know these classes: the program transports them itself.
 *
 * All classes are plain values without a base class. Copying copies every text. Construction from a
 * constant rvalue copies, too, and does not change the source. There is no move assignment. An
 * assignment assigns the members in declaration order; assigning an object to itself does nothing.
 * The destructor is the only virtual function.
 *
 * The header needs C++11. Objects hold std::string. So a program that shares objects with the
 * library must use the same C++ library as the library's build, with the same string layout.
 *
 * Copying and assigning may throw std::bad_alloc. An assignment that throws has assigned the
 * members before the one that could not be copied.
 *
 * mdm::set(), mdm::unset(), mdm::value_or() and mdm::equal() fill, read and compare. All of their
 * code is in this header.
 *
 * @code{.cpp}
 * #include <iostream>
 *
 * #include <mdm/device_policy_manager.hpp>
 *
 * int main()
 * {
 *     using Event = DevicePolicyManager::DeviceInventoryCallHistoryEvent;
 *     Event event;
 *     mdm::set(event.str5, "+431234567");
 *     const Event copy = event;
 *     mdm::unset(event.str5);
 *     std::cout << mdm::value_or(copy.str5, "unknown") << '\n'
 *               << mdm::value_or(event.str5, "unknown") << '\n'
 *               << (mdm::equal(copy, event) ? "equal" : "not equal")
 *               << '\n';
 *     return 0;
 * }
 * // prints: +431234567
 * // prints: unknown
 * // prints: not equal
 * @endcode
 *
 * Thread safety: an object is a plain value. While one thread changes an object, no other thread
 * may use it. The constants never change.
 */
#ifndef MDM_DEVICE_POLICY_MANAGER_HPP
#define MDM_DEVICE_POLICY_MANAGER_HPP

#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>

#include "mdm/api.h"

/** The value classes. */
namespace DevicePolicyManager {

/**
 * A value with a flag that tells whether it was set. Only the user sets the flag: an assignment to
 * #value leaves it as it is. mdm::set() assigns the value and sets the flag.
 *
 * The classes use it with int32_t, uint32_t, int64_t, uint64_t, std::string and the two classes of
 * details.
 */
template <class T>
class Nullable {
public:
    /** The type's default (zero, the empty text, a default object), not set. */
    Nullable() = default;
    /** A copy. @param other  the source. */
    Nullable(const Nullable &other) = default;
    /** Assigns the value, then the flag. @param other  the source. @return This object. */
    Nullable &operator=(const Nullable &other) = default;
    virtual ~Nullable() = default; /**< Destroys the value. */

    T value{};           /**< Only meaningful if #is_set is true. */
    bool is_set = false; /**< Whether #value was set. */
};

/** Details of a call in its history. */
class MDM_API DeviceInventoryCallHistoryCallDetails {
public:
    /** Zero and the empty text. */
    DeviceInventoryCallHistoryCallDetails();
    /** A copy. @param other  the source, which stays as it was. */
    DeviceInventoryCallHistoryCallDetails(const DeviceInventoryCallHistoryCallDetails &other);
    /** Assigns every member in order; does nothing for itself. @param other  the source.
     * @return This object. */
    DeviceInventoryCallHistoryCallDetails &
    operator=(const DeviceInventoryCallHistoryCallDetails &other);
    /** Destroys the members in reverse order. */
    virtual ~DeviceInventoryCallHistoryCallDetails();

    int32_t num0 = 0; /**< Plain: always there. */
    std::string str1; /**< Plain: always there. */
};

/** One call in the history. */
class MDM_API DeviceInventoryCallHistoryEvent {
public:
    /** Every member at its default and not set. */
    DeviceInventoryCallHistoryEvent();
    /** A copy. @param other  the source, which stays as it was. */
    DeviceInventoryCallHistoryEvent(const DeviceInventoryCallHistoryEvent &other);
    /** A copy. @param other  the source, which stays as it was. */
    DeviceInventoryCallHistoryEvent(const DeviceInventoryCallHistoryEvent &&other);
    /** Assigns every member in order; does nothing for itself. @param other  the source.
     * @return This object. */
    DeviceInventoryCallHistoryEvent &operator=(const DeviceInventoryCallHistoryEvent &other);
    /** Destroys the members in reverse order. */
    virtual ~DeviceInventoryCallHistoryEvent();

    Nullable<int32_t> num0;                                    /**< A number. */
    Nullable<int64_t> wide1;                                   /**< A wide number. */
    Nullable<int32_t> num2;                                    /**< A number. */
    Nullable<uint32_t> num3;                                   /**< An unsigned number. */
    Nullable<int32_t> num4;                                    /**< A number. */
    Nullable<std::string> str5;                                /**< A text. */
    Nullable<std::string> str6;                                /**< A text. */
    Nullable<std::string> str7;                                /**< A text. */
    Nullable<std::string> str8;                                /**< A text. */
    Nullable<std::string> str9;                                /**< A text. */
    Nullable<std::string> str10;                               /**< A text. */
    Nullable<std::string> str11;                               /**< A text. */
    Nullable<DeviceInventoryCallHistoryCallDetails> details12; /**< The call's details. */
};

/** The parameters of a query of the call history. */
class MDM_API DeviceInventoryCallHistoryQueryParameter {
public:
    /** Every member at its default and not set. */
    DeviceInventoryCallHistoryQueryParameter();
    /** A copy. @param other  the source, which stays as it was. */
    DeviceInventoryCallHistoryQueryParameter(const DeviceInventoryCallHistoryQueryParameter &other);
    /** A copy. @param other  the source, which stays as it was. */
    DeviceInventoryCallHistoryQueryParameter(
        const DeviceInventoryCallHistoryQueryParameter &&other);
    /** Assigns every member in order; does nothing for itself. @param other  the source.
     * @return This object. */
    DeviceInventoryCallHistoryQueryParameter &
    operator=(const DeviceInventoryCallHistoryQueryParameter &other);
    /** Destroys the members in reverse order. */
    virtual ~DeviceInventoryCallHistoryQueryParameter();

    Nullable<int32_t> num0;     /**< A number. */
    Nullable<uint64_t> wide1;   /**< An unsigned wide number. */
    Nullable<uint64_t> wide2;   /**< An unsigned wide number. */
    Nullable<int32_t> num3;     /**< A number. */
    Nullable<std::string> str4; /**< A text. */
    Nullable<std::string> str5; /**< A text. */
    Nullable<int32_t> num6;     /**< A number. */
    Nullable<int32_t> num7;     /**< A number. */
};

/** The status of a purge of the inventory. */
class MDM_API DeviceInventoryPurgeStatus {
public:
    /** Every member at its default and not set. */
    DeviceInventoryPurgeStatus();
    /** A copy. @param other  the source, which stays as it was. */
    DeviceInventoryPurgeStatus(const DeviceInventoryPurgeStatus &other);
    /** A copy. @param other  the source, which stays as it was. */
    DeviceInventoryPurgeStatus(const DeviceInventoryPurgeStatus &&other);
    /** Assigns every member in order; does nothing for itself. @param other  the source.
     * @return This object. */
    DeviceInventoryPurgeStatus &operator=(const DeviceInventoryPurgeStatus &other);
    /** Destroys the members in reverse order. */
    virtual ~DeviceInventoryPurgeStatus();

    Nullable<int64_t> wide0; /**< A wide number. */
    Nullable<int64_t> wide1; /**< A wide number. */
    Nullable<int64_t> wide2; /**< A wide number. */
    Nullable<int64_t> wide3; /**< A wide number. */
    Nullable<int64_t> wide4; /**< A wide number. */
    Nullable<int64_t> wide5; /**< A wide number. */
};

/** The details of one SIM. */
class MDM_API MiscSimChangeInfoCommonDetailsCommon {
public:
    /** Every member at its default and not set. */
    MiscSimChangeInfoCommonDetailsCommon();
    /** A copy. @param other  the source, which stays as it was. */
    MiscSimChangeInfoCommonDetailsCommon(const MiscSimChangeInfoCommonDetailsCommon &other);
    /** A copy. @param other  the source, which stays as it was. */
    MiscSimChangeInfoCommonDetailsCommon(const MiscSimChangeInfoCommonDetailsCommon &&other);
    /** Assigns every member in order; does nothing for itself. @param other  the source.
     * @return This object. */
    MiscSimChangeInfoCommonDetailsCommon &
    operator=(const MiscSimChangeInfoCommonDetailsCommon &other);
    /** Destroys the members in reverse order. */
    virtual ~MiscSimChangeInfoCommonDetailsCommon();

    Nullable<std::string> str0; /**< A text. */
    Nullable<std::string> str1; /**< A text. */
    Nullable<std::string> str2; /**< A text. */
    Nullable<std::string> str3; /**< A text. */
    Nullable<std::string> str4; /**< A text. */
    Nullable<std::string> str5; /**< A text. */
    Nullable<int64_t> wide6;    /**< A wide number. */
};

/** A report that a SIM was changed, with the details of two. */
class MDM_API MiscSimChangeInfoCommon {
public:
    /** Every member at its default and not set. */
    MiscSimChangeInfoCommon();
    /** A copy. @param other  the source, which stays as it was. */
    MiscSimChangeInfoCommon(const MiscSimChangeInfoCommon &other);
    /** A copy. @param other  the source, which stays as it was. */
    MiscSimChangeInfoCommon(const MiscSimChangeInfoCommon &&other);
    /** Assigns every member in order; does nothing for itself. @param other  the source.
     * @return This object. */
    MiscSimChangeInfoCommon &operator=(const MiscSimChangeInfoCommon &other);
    /** Destroys the members in reverse order, the second details before the first. */
    virtual ~MiscSimChangeInfoCommon();

    Nullable<int32_t> num0;                                  /**< A number. */
    Nullable<int64_t> wide1;                                 /**< A wide number. */
    Nullable<MiscSimChangeInfoCommonDetailsCommon> details2; /**< The details of one SIM. */
    Nullable<MiscSimChangeInfoCommonDetailsCommon> details3; /**< The details of the other. */
};

/**
 * The names of the mail-server protocols.
 *
 * The library constructs them when it is loaded, in this order. So static initialisers of a program
 * or a library that links this one may use them. The library destroys them when it is unloaded or
 * when the process ends.
 */
namespace ServerInfo {

extern MDM_API const std::string SMTP_PROTOCOL;  /**< "smtp" */
extern MDM_API const std::string POP3_PROTOCOL;  /**< "pop3" */
extern MDM_API const std::string IMAP4_PROTOCOL; /**< "imap4" */

}  // namespace ServerInfo
}  // namespace DevicePolicyManager

/** Functions that fill, read and compare the value classes. */
namespace mdm {

/** @cond */
namespace detail {

using DevicePolicyManager::Nullable;

// T is not deduced from an argument of these types, so the argument is converted where the call
// stands. There the compiler knows literals, and its warning about a changed sign
// (-Wsign-conversion) names the caller's line.
template <class T>
using NotDeduced = typename std::enable_if<true, T>::type;
template <class T>
using Number = typename std::enable_if<std::is_arithmetic<T>::value, T>::type;

template <class From>
using Bare = typename std::remove_cv<typename std::remove_reference<From>::type>::type;

// Whether T{from} narrows no value of From.
template <class T, class From, class = void>
struct NeverNarrows : std::false_type {
};
template <class T, class From>
struct NeverNarrows<T, From, decltype(void(T{std::declval<From>()}))> : std::true_type {
};

// A literal is an int, so an integer may also come from one of its size or a smaller one.
template <class T, class From>
struct FitsNumber
    : std::integral_constant<
          bool, NeverNarrows<T, From>::value ||
                    (std::is_integral<T>::value && !std::is_same<T, bool>::value &&
                     (std::is_integral<Bare<From>>::value || std::is_enum<Bare<From>>::value) &&
                     sizeof(From) <= sizeof(T))> {
};

// std::string could also be assigned from a number, as one character, and from a null pointer.
template <class T, class From>
struct FitsObject : std::integral_constant<bool, std::is_assignable<T &, From>::value &&
                                                     (!std::is_scalar<Bare<From>>::value ||
                                                      std::is_pointer<Bare<From>>::value)> {
};

template <class T, class From>
struct Fits : std::conditional<std::is_arithmetic<T>::value, FitsNumber<T, From>,
                               FitsObject<T, From>>::type {
};

template <class T, class From>
using IfObject =
    typename std::enable_if<!std::is_arithmetic<T>::value && Fits<T, From>::value>::type;
template <class T, class From>
using IfUnfit = typename std::enable_if<!Fits<T, From>::value>::type;

// The functions stand in a class, so that each of them finds all others.
struct Equality {
    template <class T>
    static bool of(const T &a, const T &b)
    {
        return a == b;
    }

    template <class T>
    static bool of(const Nullable<T> &a, const Nullable<T> &b)
    {
        return a.is_set == b.is_set && (!a.is_set || of(a.value, b.value));
    }

    using CallDetails = DevicePolicyManager::DeviceInventoryCallHistoryCallDetails;
    static bool of(const CallDetails &a, const CallDetails &b)
    {
        return members(a, b, &CallDetails::num0, &CallDetails::str1);
    }

    using Event = DevicePolicyManager::DeviceInventoryCallHistoryEvent;
    static bool of(const Event &a, const Event &b)
    {
        return members(a, b, &Event::num0, &Event::wide1, &Event::num2, &Event::num3, &Event::num4,
                       &Event::str5, &Event::str6, &Event::str7, &Event::str8, &Event::str9,
                       &Event::str10, &Event::str11, &Event::details12);
    }

    using Query = DevicePolicyManager::DeviceInventoryCallHistoryQueryParameter;
    static bool of(const Query &a, const Query &b)
    {
        return members(a, b, &Query::num0, &Query::wide1, &Query::wide2, &Query::num3, &Query::str4,
                       &Query::str5, &Query::num6, &Query::num7);
    }

    using PurgeStatus = DevicePolicyManager::DeviceInventoryPurgeStatus;
    static bool of(const PurgeStatus &a, const PurgeStatus &b)
    {
        return members(a, b, &PurgeStatus::wide0, &PurgeStatus::wide1, &PurgeStatus::wide2,
                       &PurgeStatus::wide3, &PurgeStatus::wide4, &PurgeStatus::wide5);
    }

    using SimDetails = DevicePolicyManager::MiscSimChangeInfoCommonDetailsCommon;
    static bool of(const SimDetails &a, const SimDetails &b)
    {
        return members(a, b, &SimDetails::str0, &SimDetails::str1, &SimDetails::str2,
                       &SimDetails::str3, &SimDetails::str4, &SimDetails::str5, &SimDetails::wide6);
    }

    using SimChange = DevicePolicyManager::MiscSimChangeInfoCommon;
    static bool of(const SimChange &a, const SimChange &b)
    {
        return members(a, b, &SimChange::num0, &SimChange::wide1, &SimChange::details2,
                       &SimChange::details3);
    }

private:
    template <class Value>
    static bool members(const Value & /*a*/, const Value & /*b*/)
    {
        return true;
    }

    template <class Value, class Member, class... Rest>
    static bool members(const Value &a, const Value &b, Member Value::*first, Rest... rest)
    {
        return of(a.*first, b.*first) && members(a, b, rest...);
    }
};

}  // namespace detail
/** @endcond */

/**
 * Sets the value and the flag of a member that is a number.
 *
 * A wider integer and a floating-point number do not compile: convert them first. An integer of the
 * member's size or a smaller one compiles, whatever its sign, because literals have the type int.
 * With -Wsign-conversion a compiler warns about a changed sign, but not about a literal that fits.
 *
 * @param nullable  the member.
 * @param value     the number.
 */
template <class T>
void set(DevicePolicyManager::Nullable<T> &nullable, detail::Number<T> value)
{
    nullable.value = value;
    nullable.is_set = true;
}

/**
 * Sets the value and the flag of a member that is a text or an object.
 *
 * The value is assigned: a std::string that is an rvalue is moved, everything else is copied. A
 * number and a null pointer constant do not compile. If the assignment throws, the flag stays as it
 * was.
 *
 * @param nullable  the member.
 * @param value     anything that T can be assigned from: for a text also a literal and a
 *                  std::string_view. A `const char *` must not be null.
 */
template <class T, class From = T, class = detail::IfObject<T, From>>
void set(DevicePolicyManager::Nullable<T> &nullable, From &&value)
{
    nullable.value = std::forward<From>(value);
    nullable.is_set = true;
}

/** @cond */
// The value may not fit: convert it first.
template <class T, class From>
detail::IfUnfit<T, From> set(DevicePolicyManager::Nullable<T> &nullable, From &&value) = delete;
/** @endcond */

/**
 * Puts a member back to the default of its type, not set. Allocates nothing. The memory of a text
 * is not cleared.
 *
 * @param nullable  the member.
 */
template <class T>
void unset(DevicePolicyManager::Nullable<T> &nullable)
{
    nullable = DevicePolicyManager::Nullable<T>();
}

/**
 * Returns a copy of the value if it was set, and the fallback if not.
 *
 * @param nullable  the member.
 * @param fallback  the result for a member that was not set. Numbers and null pointer constants
 *                  that set() does not take do not compile here either.
 * @return The value or the fallback.
 */
template <class T>
T value_or(const DevicePolicyManager::Nullable<T> &nullable, detail::NotDeduced<T> fallback)
{
    if (nullable.is_set) {
        return nullable.value;
    }
    return fallback;
}

/** @cond */
// The fallback may not fit: convert it first.
template <class T, class From>
detail::IfUnfit<T, From> value_or(const DevicePolicyManager::Nullable<T> &nullable,
                                  From &&fallback) = delete;
/** @endcond */

/**
 * Compares two members, or two objects of a value class member by member.
 *
 * Two members are equal if both were set and have equal values. They are also equal if neither was
 * set, whatever values they hold. The function is not an operator, because a program may have one
 * of its own.
 *
 * @param a  a Nullable or an object of one of the six classes. A Nullable of any other type needs
 *           the operator == of that type.
 * @param b  the other one, of the same type.
 * @return Whether they are equal.
 */
template <class Value>
bool equal(const Value &a, const Value &b)
{
    static_assert(std::is_class<Value>::value, "mdm::equal() compares members and objects");
    return detail::Equality::of(a, b);
}

}  // namespace mdm

#endif
