// Frame metadata: a map from tag to values under one mutex, which a burst holds.
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <type_traits>
#include <utility>

#include "platform/Metadata.h"
#include "platform/host/Guarded.h"
#include "platform/host/Host.h"
#include "platform/host/HostState.h"
#include "platform/host/Recorded.h"

namespace {

using host::MetadataValues;
using host::Operation;
using host::internal::Recorded;
using NSCam::IMetadata;

using ValueMap = std::map<std::uint32_t, MetadataValues>;

constexpr int kDone = 0;
constexpr int kWriteFailed = -1;

int burstRuns() {
    const auto failures = host::internal::failures();
    return failures ? failures->burstRuns : 1;
}

// The status that an access to `tag` is to fail with; 0 for none.
int failedAccess(std::uint32_t tag, int host::Failures::Access::*kind) {
    const auto failures = host::internal::failures();
    if (!failures) return kDone;
    const auto found = failures->access.find(tag);
    return found != failures->access.end() ? found->second.*kind : kDone;
}

// The type of the values, as the session format names it.
template <typename T>
constexpr std::string_view kTypeName = "memory";
template <>
constexpr std::string_view kTypeName<std::int32_t> = "int32";
template <>
constexpr std::string_view kTypeName<std::int64_t> = "int64";
template <>
constexpr std::string_view kTypeName<float> = "float";
template <>
constexpr std::string_view kTypeName<double> = "double";

template <typename T>
constexpr bool kIsMemory = std::is_same_v<T, IMetadata::Memory>;

// The alternative of MetadataValues that holds values of type T: one block, or a list of numbers.
template <typename T>
using Held = std::conditional_t<kIsMemory<T>, T, std::vector<T>>;

// The values under `tag` when they are of type T; nothing when there are none or of another type.
template <typename T>
std::optional<std::span<const T>> findValues(const ValueMap& entries, std::uint32_t tag) {
    const auto found = entries.find(tag);
    if (found == entries.end()) return std::nullopt;
    const auto* held = std::get_if<Held<T>>(&found->second);
    if (!held) return std::nullopt;
    if constexpr (kIsMemory<T>) {
        return std::span<const T>(held, 1);
    } else {
        return std::span<const T>(*held);
    }
}

// Whether an entry can be made of `count` values: a block stands alone, numbers may be any number.
template <typename T>
bool isWritable(const T* values, unsigned long count) {
    if constexpr (kIsMemory<T>) {
        return values && count == 1;
    } else {
        return values || count == 0;
    }
}

template <typename T>
MetadataValues makeValues(const T* values, unsigned long count) {
    if constexpr (kIsMemory<T>) {
        return *values;
    } else {
        return std::vector<T>(values, values + count);
    }
}

}  // namespace

namespace NSCam {

struct IMetadata::Entries {
    host::internal::Guarded<ValueMap> values;
};

// The entries of the object whose lock the burst holds.
struct IMetadata::Storage::Access {
    ValueMap& entries;

    // Here, because only storage code may make an entry.
    BurstEntry burstEntry() { return BurstEntry(*this); }
};

struct MetadataAccess {
    static void set(IMetadata& metadata, std::uint32_t tag, MetadataValues&& values) {
        metadata.mEntries->values.lock()->insert_or_assign(tag, std::move(values));
    }

    static ValueMap copy(const IMetadata& metadata) { return *metadata.mEntries->values.lock(); }
};

template <typename T>
int IMetadata::Storage::readEntry(std::uint32_t tag, T& value, std::size_t index) const {
    Recorded call(Operation::kReadEntry);
    call.with("tag", tag).with("type", kTypeName<T>).with("index", index).begin();
    if (const int status = failedAccess(tag, &host::Failures::Access::read)) return call.answer("status", status);
    const auto values = findValues<T>(mAccess->entries, tag);
    if (!values || index >= values->size()) return call.answer("status", host::kMetadataReadFailed);
    value = (*values)[index];
    return call.answer("status", kDone);
}

template <typename T>
int IMetadata::Storage::readEntries(std::uint32_t tag, std::vector<T>& values) const {
    Recorded call(Operation::kReadEntries);
    call.with("tag", tag).with("type", kTypeName<T>).begin();
    if (const int status = failedAccess(tag, &host::Failures::Access::read)) return call.answer("status", status);
    const auto held = findValues<T>(mAccess->entries, tag);
    if (!held) return call.answer("status", host::kMetadataReadFailed);
    // All that can fail is done before the first change.
    values.reserve(held->size());
    values.assign(held->begin(), held->end());
    return call.answer("status", kDone);
}

template <typename T>
int IMetadata::Storage::writeEntries(std::uint32_t tag, const T* values, unsigned long count, std::uint32_t options) {
    Recorded call(Operation::kWriteEntries);
    call.with("tag", tag);
    if (isWritable(values, count)) call.with(kTypeName<T>, [&] { return makeValues(values, count); });
    call.with("count", count).with("options", options).begin();
    if (const int status = failedAccess(tag, &host::Failures::Access::write)) return call.answer("status", status);
    if (!isWritable(values, count)) return call.answer("status", kWriteFailed);
    // All that can fail is done before the old values go.
    mAccess->entries.insert_or_assign(tag, makeValues(values, count));
    return call.answer("status", kDone);
}

template int IMetadata::Storage::readEntry(std::uint32_t, std::int32_t&, std::size_t) const;
template int IMetadata::Storage::readEntry(std::uint32_t, std::int64_t&, std::size_t) const;
template int IMetadata::Storage::readEntry(std::uint32_t, float&, std::size_t) const;
template int IMetadata::Storage::readEntry(std::uint32_t, double&, std::size_t) const;
template int IMetadata::Storage::readEntry(std::uint32_t, Memory&, std::size_t) const;
template int IMetadata::Storage::readEntries(std::uint32_t, std::vector<std::int32_t>&) const;
template int IMetadata::Storage::readEntries(std::uint32_t, std::vector<std::int64_t>&) const;
template int IMetadata::Storage::readEntries(std::uint32_t, std::vector<float>&) const;
template int IMetadata::Storage::readEntries(std::uint32_t, std::vector<double>&) const;
template int IMetadata::Storage::readEntries(std::uint32_t, std::vector<Memory>&) const;
template int IMetadata::Storage::writeEntries(std::uint32_t, const std::int32_t*, unsigned long, std::uint32_t);
template int IMetadata::Storage::writeEntries(std::uint32_t, const std::int64_t*, unsigned long, std::uint32_t);
template int IMetadata::Storage::writeEntries(std::uint32_t, const float*, unsigned long, std::uint32_t);
template int IMetadata::Storage::writeEntries(std::uint32_t, const double*, unsigned long, std::uint32_t);
template int IMetadata::Storage::writeEntries(std::uint32_t, const Memory*, unsigned long, std::uint32_t);

IMetadata::IMetadata() : mEntries(std::make_unique<Entries>()) {}

IMetadata::IMetadata(const IMetadata& other) : IMetadata() {
    *mEntries->values.lock() = MetadataAccess::copy(other);
}

IMetadata& IMetadata::operator=(const IMetadata& other) {
    // One lock after the other, never both, so that two objects assigned to each other cannot block one another.
    ValueMap values = MetadataAccess::copy(other);
    mEntries->values.lock()->swap(values);
    return *this;
}

IMetadata::~IMetadata() = default;

int IMetadata::burstRead(const std::function<int(const BurstEntry&)>& callback) const {
    Recorded call(Operation::kBurstRead);
    call.begin();
    if (!callback) return call.answer("status", host::kMetadataReadFailed);
    const auto entries = mEntries->values.lock();
    BurstEntry::Access access{*entries};
    int status = kDone;
    for (int left = burstRuns(); left > 0; --left)
        status = callback(access.burstEntry());
    return call.answer("status", status);
}

void IMetadata::burstWrite(const std::function<void(BurstEntry&)>& callback) {
    Recorded call(Operation::kBurstWrite);
    call.begin();
    if (!callback) return call.done();
    const auto entries = mEntries->values.lock();
    BurstEntry::Access access{*entries};
    BurstEntry entry = access.burstEntry();
    for (int left = burstRuns(); left > 0; --left)
        callback(entry);
    call.done();
}

}  // namespace NSCam

void host::setMetadataEntry(IMetadata& metadata, std::uint32_t tag, MetadataValues values) {
    NSCam::MetadataAccess::set(metadata, tag, std::move(values));
}

std::map<std::uint32_t, MetadataValues> host::metadataEntries(const IMetadata& metadata) {
    return NSCam::MetadataAccess::copy(metadata);
}
