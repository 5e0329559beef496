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
 * @code{.cpp}
 * using namespace DevicePolicyManager;
 * DeviceInventoryCallHistoryEvent event;
 * event.str5.value = "+431234567";
 * event.str5.is_set = true;
 * DeviceInventoryCallHistoryEvent copy = event;
 * @endcode
 *
 * Thread safety: an object is a plain value. While one thread changes an object, no other thread
 * may use it. The constants never change.
 */
#ifndef MDM_DEVICE_POLICY_MANAGER_HPP
#define MDM_DEVICE_POLICY_MANAGER_HPP

#include <cstdint>
#include <string>

#include "mdm/api.h"

/** The value classes. */
namespace DevicePolicyManager {

/**
 * A value with a flag that tells whether it was set. Only the user sets the flag.
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

#endif
