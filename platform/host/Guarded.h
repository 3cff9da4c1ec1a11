// Building blocks for the state of the host's services: objects that outlive every thread, reachable only under a lock.
#pragma once

#include <mutex>

namespace host::internal {

// A state together with its mutex. The only way to the state is lock(), so that no access can forget the mutex.
template <typename State>
class Guarded {
public:
    // Access to the state; the mutex is held for as long as this object lives.
    class Locked {
    public:
        explicit Locked(Guarded& owner) : mLock(owner.mMutex), mState(owner.mState) {}

        State* operator->() const { return &mState; }
        State& operator*() const { return mState; }

    private:
        std::lock_guard<std::mutex> mLock;
        State& mState;
    };

    // Waits for the mutex. As a temporary, the result holds it to the end of the full expression; references into the
    // state must not leave that expression.
    [[nodiscard]] Locked lock() { return Locked(*this); }

private:
    std::mutex mMutex;
    State mState{};  // guarded by mMutex
};

// The one object of type T in the process, made on the first call and never destroyed: threads and destructors that
// run while the process ends still find it. Thread safe; may throw std::bad_alloc, the next call then tries again.
template <typename T>
T& processWide() {
    static T& object = *new T;
    return object;
}

}  // namespace host::internal
