// Frame metadata: entries of one type each, under 32-bit tags, reached in bursts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace NSCam {

// The metadata of one frame. A burst runs its callback exactly once, on the calling thread, with the object's own lock
// held: nothing else reads or writes the entries meanwhile, and the callback must not start another burst on the same
// object. Bursts may throw, and pass on what the callback throws. No burst may call the library.
class IMetadata {
public:
    // A block of bytes laid out by the platform. Copies share the bytes, which never change.
    class Memory {
    public:
        Memory() = default;
        explicit Memory(std::shared_ptr<const std::vector<std::uint8_t>> bytes) : mBytes(std::move(bytes)) {}

        // The first byte; null when the block is empty. Valid as long as this object or a copy lives.
        const std::uint8_t* array() const { return mBytes ? mBytes->data() : nullptr; }
        // Length in bytes.
        std::size_t size() const { return mBytes ? mBytes->size() : 0; }

    private:
        std::shared_ptr<const std::vector<std::uint8_t>> mBytes;
    };

    // For writeEntries: a write like any other.
    static constexpr std::uint32_t kNoWriteOptions = 0xFFFFFFFF;

    // Typed access to the entries during a burst. The types are int32_t, int64_t, float, double and Memory.
    class Storage {
    public:
        // The value at `index` of the entry under `tag`. Returns 0; or a non-zero status, with `value` untouched,
        // when there is no such entry, it holds another type, or it has no value at `index`.
        template <typename T>
        int readEntry(std::uint32_t tag, T& value, std::size_t index) const;

        // All values of the entry under `tag`, replacing `values`. Returns 0; or a non-zero status, with `values`
        // untouched, when there is no such entry or it holds another type. An entry without values gives an empty list.
        template <typename T>
        int readEntries(std::uint32_t tag, std::vector<T>& values) const;

        // Replaces the entry under `tag`, whatever it held, with `count` values of type T; `values` may be null when
        // `count` is 0. `options` is kNoWriteOptions unless something special is asked for. Returns 0, or a non-zero
        // status with the entry as it was.
        template <typename T>
        int writeEntries(std::uint32_t tag, const T* values, unsigned long count, std::uint32_t options);

    protected:
        struct Access;
        explicit Storage(Access& access) : mAccess(&access) {}

    private:
        Access* mAccess;
    };

    // What a burst hands to its callback; valid until the callback returns.
    class BurstEntry;

    IMetadata();
    IMetadata(const IMetadata& other);
    IMetadata& operator=(const IMetadata& other);
    ~IMetadata();

    // Runs `callback` on the entries and returns the callback's result.
    int burstRead(const std::function<int(const BurstEntry&)>& callback) const;

    // Runs `callback` on the entries; what it wrote stands when the call returns.
    void burstWrite(const std::function<void(BurstEntry&)>& callback);

private:
    friend struct MetadataAccess;  // the implementing platform's own way to the entries
    struct Entries;
    std::unique_ptr<Entries> mEntries;
};

class IMetadata::BurstEntry : public IMetadata::Storage {
private:
    friend class IMetadata;
    using Storage::Storage;
};

}  // namespace NSCam
