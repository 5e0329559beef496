// SPDX-License-Identifier: Apache-2.0
//
// What every value class promises. A test file lists the members of its classes by specialising
// Listed, and instantiates the two suites with them.
#pragma once

#include <cxxabi.h>
#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <new>
#include <string>
#include <tuple>
#include <type_traits>
#include <typeinfo>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mdm/device_policy_manager.hpp"
#include "support/allocation_trace.hpp"
#include "support/log_recorder.hpp"

namespace mdm::test {

using DevicePolicyManager::Nullable;

// Spells the types out, for the compiler to compare them with those of the members.
template <class Value, class... Member>
using Members = std::tuple<Member Value::*...>;

// The members of a value class, in order. Its bind() compiles only if there is no other.
template <class Value>
struct Listed;

template <class T>
struct Listed<Nullable<T>> {
    using Value = Nullable<T>;
    static constexpr Members<Value, T, bool> members{&Value::value, &Value::is_set};
    static void bind(Value &object) { [[maybe_unused]] auto &[value, is_set] = object; }
};

template <class T>
concept CopyAssigns = requires
{
    static_cast<T &(T::*)(const T &)>(&T::operator=);
};

template <class T>
concept MoveAssigns = requires
{
    static_cast<T &(T::*)(T &&)>(&T::operator=);
}
|| requires
{
    static_cast<T &(T::*)(const T &&)>(&T::operator=);
};

template <class T>
concept ValueType = std::is_polymorphic_v<T> && std::has_virtual_destructor_v<T> &&
                    std::is_default_constructible_v<T> && std::is_convertible_v<const T &, T> &&
                    std::is_convertible_v<const T, T> && !std::is_nothrow_move_constructible_v<T> &&
                    CopyAssigns<T> && !MoveAssigns<T>;

// Ambiguous for a class that has a constructor for each of the references.
template <class T>
struct ConstantOfEitherKind {
    explicit operator const T &() const;
    explicit operator const T &&() const;
};

template <class T>
concept HasConstantRvalueConstructor = !std::is_constructible_v<T, ConstantOfEitherKind<T>>;

// Visits every number, text and flag, in order.
template <class Part, class Visit>
void each_leaf(Part &part, const Visit &visit)
{
    if constexpr (requires { Listed<std::remove_const_t<Part>>::members; }) {
        std::apply([&](auto... member) { (each_leaf(part.*member, visit), ...); },
                   Listed<std::remove_const_t<Part>>::members);
    } else {
        visit(part);
    }
}

template <class Leaf>
inline constexpr bool is_text = std::is_same_v<std::remove_cvref_t<Leaf>, std::string>;
template <class Leaf>
inline constexpr bool is_flag = std::is_same_v<std::remove_cvref_t<Leaf>, bool>;

// Sets a leaf to a value that no other leaf gets: a number without a zero byte, or a text with a
// null character inside, so that a copy that stops there is shorter.
template <class Leaf>
void set(Leaf &leaf, uint64_t position, size_t text_length)
{
    if constexpr (is_flag<Leaf>) {
        leaf = true;
    } else if constexpr (is_text<Leaf>) {
        leaf = std::to_string(position);
        leaf.resize(text_length);
    } else {
        leaf = static_cast<Leaf>(~(position * 0x0101010101010101U));
    }
}

template <class Value>
void fill(Value &object, size_t text_length, uint64_t position = 10)
{
    each_leaf(object, [&](auto &leaf) { set(leaf, position++, text_length); });
}

using Contents = std::vector<std::string>;

template <class Value>
Contents contents_of(const Value &object)
{
    Contents contents;
    each_leaf(object, [&](const auto &leaf) {
        if constexpr (is_flag<decltype(leaf)>) {
            contents.emplace_back(leaf ? "set" : "not set");
        } else if constexpr (is_text<decltype(leaf)>) {
            contents.push_back("'" + leaf + "'");
        } else {
            contents.push_back(std::to_string(leaf));
        }
    });
    return contents;
}

// Where the texts stand, in order.
template <class Value>
std::vector<const void *> text_blocks(const Value &object)
{
    std::vector<const void *> blocks;
    each_leaf(object, [&](const auto &leaf) {
        if constexpr (is_text<decltype(leaf)>) {
            blocks.push_back(leaf.data());
        }
    });
    return blocks;
}

// Texts that fit into the object, and texts that do not.
inline constexpr std::array<size_t, 4> text_lengths = {2, 15, 16, 1000};

// An empty and a full object, and objects that differ from one of them in one leaf. None is a copy.
template <class Value>
std::list<Value> sources()
{
    std::list<Value> objects(1);
    for (const size_t length : text_lengths) {
        fill(objects.emplace_back(), length);
    }
    const size_t leaves = contents_of(objects.front()).size();
    for (size_t exception = 0; exception < leaves; ++exception) {
        Value &empty = objects.emplace_back();
        Value &full = objects.emplace_back();
        fill(full, text_lengths.back());
        size_t position = 0;
        each_leaf(empty, [&](auto &leaf) {
            if (position++ == exception) {
                set(leaf, position, text_lengths.back());
            }
        });
        position = 0;
        each_leaf(full, [&](auto &leaf) {
            if (position++ == exception) {
                leaf = {};
            }
        });
    }
    return objects;
}

// Expects what `take` makes of each source to equal it, and the source to stay as it was.
template <class Value, class Take>
void expect_copies(Take take)
{
    for (Value &source : sources<Value>()) {
        const Contents before = contents_of(source);
        const std::unique_ptr<Value> copy = take(source);
        EXPECT_EQ(contents_of(*copy), before);
        EXPECT_EQ(contents_of(source), before);
    }
}

template <class Value, class Reference>
void expect_constructor_copies()
{
    expect_copies<Value>(
        [](Value &source) { return std::make_unique<Value>(static_cast<Reference>(source)); });
}

template <class Value, class Reference>
void expect_assignment_copies()
{
    expect_copies<Value>([](Value &source) {
        auto target = std::make_unique<Value>();
        *target = static_cast<Reference>(source);
        return target;
    });
    expect_copies<Value>([](Value &source) {
        auto target = std::make_unique<Value>();
        fill(*target, 40, 100);
        *target = static_cast<Reference>(source);
        return target;
    });
}

// Where a derived class finds the first virtual function of its own in the table.
template <class Value>
struct WithOwnFunction : Value {
    virtual void own() {}
};

template <class Value>
auto first_free_slot()
{
    return std::bit_cast<std::array<std::ptrdiff_t, 2>>(&WithOwnFunction<Value>::own);
}

struct DestructorAlone {
    virtual ~DestructorAlone() = default;
};

template <class Value>
struct WithOwnText : Value {
    std::string text = std::string(1000, 't');
};

constexpr size_t rounded_up(size_t size, size_t to)
{
    return (size + to - 1) / to * to;
}

template <class Value>
class ValueClass : public ::testing::Test {
};
TYPED_TEST_SUITE_P(ValueClass);

TYPED_TEST_P(ValueClass, IsItsTableAndTheListedMembers)
{
    TypeParam object;
    Listed<TypeParam>::bind(object);
    const auto *begin = reinterpret_cast<const std::byte *>(&object);
    size_t end = sizeof(void *);
    const auto expect_next = [&]<class Member>(const Member &member) {
        const auto offset = reinterpret_cast<const std::byte *>(&member) - begin;
        end = rounded_up(end, alignof(Member));
        EXPECT_EQ(offset, static_cast<std::ptrdiff_t>(end));
        end += sizeof member;
    };
    std::apply([&](auto... member) { (expect_next(object.*member), ...); },
               Listed<TypeParam>::members);
    EXPECT_EQ(sizeof object, rounded_up(end, alignof(TypeParam)));
}

TYPED_TEST_P(ValueClass, HasNoBaseClass)
{
    // The ABI describes a class that has one with another kind of description.
    const std::type_info &description = typeid(TypeParam);
    EXPECT_EQ(typeid(description), typeid(abi::__class_type_info));
}

TYPED_TEST_P(ValueClass, HasNoVirtualFunctionButTheDestructor)
{
    EXPECT_EQ(first_free_slot<TypeParam>(), first_free_slot<DestructorAlone>());
}

TYPED_TEST_P(ValueClass, IsEmptyWhereverItIsBuilt)
{
    alignas(TypeParam) std::array<std::byte, sizeof(TypeParam)> memory;
    memory.fill(std::byte{0xFF});
    auto *object = new (memory.data()) TypeParam;
    each_leaf(*object, []<class Leaf>(const Leaf &leaf) { EXPECT_EQ(leaf, Leaf{}); });
    object->~TypeParam();
}

TYPED_TEST_P(ValueClass, CopyEqualsItsSource)
{
    expect_constructor_copies<TypeParam, const TypeParam &>();
}

// Q-VALUES-1
TYPED_TEST_P(ValueClass, RvalueIsCopied)
{
    expect_constructor_copies<TypeParam, const TypeParam &&>();
    expect_constructor_copies<TypeParam, TypeParam &&>();
}

TYPED_TEST_P(ValueClass, AssignmentReplacesEverything)
{
    expect_assignment_copies<TypeParam, const TypeParam &>();
}

TYPED_TEST_P(ValueClass, AssignsItsTextsInOrder)
{
    TypeParam source;
    fill(source, 1000);
    TypeParam target;
    AllocationTrace trace;
    target = source;
    trace.stop();
    std::vector<const void *> allocated;
    for (const Block &block : trace.allocated()) {
        allocated.push_back(block.address);
    }
    EXPECT_EQ(allocated, text_blocks(target));
}

// Q-VALUES-1
TYPED_TEST_P(ValueClass, AssignmentCopiesAnRvalue)
{
    expect_assignment_copies<TypeParam, const TypeParam &&>();
    expect_assignment_copies<TypeParam, TypeParam &&>();
}

TYPED_TEST_P(ValueClass, AssignmentsChain)
{
    TypeParam first;
    TypeParam second;
    TypeParam third;
    fill(third, 40);
    EXPECT_EQ(&(first = second), &first);
    first = second = third;
    EXPECT_EQ(contents_of(first), contents_of(third));
    EXPECT_EQ(contents_of(second), contents_of(third));
}

TYPED_TEST_P(ValueClass, AssignmentToItselfChangesNothing)
{
    for (TypeParam &object : sources<TypeParam>()) {
        const Contents before = contents_of(object);
        const TypeParam &same = object;
        EXPECT_EQ(&(object = same), &object);
        EXPECT_EQ(contents_of(object), before);
    }
}

TYPED_TEST_P(ValueClass, CopyIsIndependentOfItsSource)
{
    // In place, where a shared text would be shared still.
    const auto change = [](auto &leaf) {
        if constexpr (is_text<decltype(leaf)>) {
            std::ranges::fill(leaf, '!');
        } else {
            leaf = {};
        }
    };
    for (const size_t length : text_lengths) {
        TypeParam source;
        fill(source, length);
        const Contents before = contents_of(source);
        TypeParam constructed(source);
        TypeParam assigned;
        assigned = source;

        each_leaf(constructed, change);
        EXPECT_EQ(contents_of(source), before);
        each_leaf(source, change);
        EXPECT_EQ(contents_of(assigned), before);
    }
}

TYPED_TEST_P(ValueClass, LivesInAGrowingContainer)
{
    std::vector<TypeParam> objects;
    for (uint64_t position = 10; position < 15; ++position) {
        fill(objects.emplace_back(), 40, position);
    }
    uint64_t position = 10;
    for (const TypeParam &object : objects) {
        TypeParam expected;
        fill(expected, 40, position++);
        EXPECT_EQ(contents_of(object), contents_of(expected));
    }
}

TYPED_TEST_P(ValueClass, ReleasesItsTextsFromTheLastToTheFirst)
{
    auto object = std::make_unique<TypeParam>();
    fill(*object, 1000);
    std::vector<const void *> blocks = text_blocks(*object);
    std::ranges::reverse(blocks);
    blocks.push_back(object.get());
    AllocationTrace trace;
    object.reset();
    trace.stop();
    EXPECT_EQ(trace.released(), blocks);
}

TYPED_TEST_P(ValueClass, DestructionReachesADerivedClass)
{
    AllocationTrace trace;
    {
        std::unique_ptr<TypeParam> object = std::make_unique<WithOwnText<TypeParam>>();
        fill(*object, 1000);
    }
    trace.stop();
    EXPECT_THAT(trace.kept(), ::testing::IsEmpty());
}

TYPED_TEST_P(ValueClass, LogsNothing)
{
    LogRecorder log(MDM_LOG_DEBUG);
    {
        const TypeParam empty;
        TypeParam object(empty);
        object = static_cast<const TypeParam &&>(empty);
    }
    EXPECT_THAT(log.take(), ::testing::IsEmpty());
}

REGISTER_TYPED_TEST_SUITE_P(ValueClass, IsItsTableAndTheListedMembers, HasNoBaseClass,
                            HasNoVirtualFunctionButTheDestructor, IsEmptyWhereverItIsBuilt,
                            CopyEqualsItsSource, RvalueIsCopied, AssignmentReplacesEverything,
                            AssignsItsTextsInOrder, AssignmentCopiesAnRvalue, AssignmentsChain,
                            AssignmentToItselfChangesNothing, CopyIsIndependentOfItsSource,
                            LivesInAGrowingContainer, ReleasesItsTextsFromTheLastToTheFirst,
                            DestructionReachesADerivedClass, LogsNothing);

// What a Nullable alone does not promise.
template <class Value>
class ExportedClass : public ::testing::Test {
};
TYPED_TEST_SUITE_P(ExportedClass);

TYPED_TEST_P(ExportedClass, AssignmentToItselfWritesNothing)
{
    constexpr size_t size = 4096;
    static_assert(sizeof(TypeParam) <= size);
    void *memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    auto *object = new (memory) TypeParam;
    fill(*object, 1000);
    const Contents before = contents_of(*object);
    const TypeParam &same = *object;

    ASSERT_EQ(mprotect(memory, size, PROT_READ), 0);
    *object = same;  // a write would end the program
    ASSERT_EQ(mprotect(memory, size, PROT_READ | PROT_WRITE), 0);
    EXPECT_EQ(contents_of(*object), before);
    object->~TypeParam();
    munmap(memory, size);
}

REGISTER_TYPED_TEST_SUITE_P(ExportedClass, AssignmentToItselfWritesNothing);

}  // namespace mdm::test
