// Decides whose hand-overs are: no message of one names its sensor. Calculations that list its samples tell, those that
// ought to list them and do not exclude; for the rest, what continues the samples, numbers and thread of a sensor's
// hand-overs before is its own. For any number of sensors.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "tools/import/Timeline.h"

namespace replay::import {

class Attribution {
public:
    void registered(std::int32_t sensor, std::int32_t type);
    void unregistered(std::int32_t sensor) { mMonitors.erase(sensor); }

    struct Choice {
        std::optional<std::int32_t> sensor;  // none: of a sensor that no message names
        bool sure = true;                    // otherwise others are as likely
    };
    // `ahead` holds what follows. Call filed() once the choice is taken.
    Choice choose(const HandOver& batch, const Timeline& ahead);
    void filed(std::int32_t sensor, const HandOver& batch);

    std::size_t monitors() const { return mMonitors.size(); }

private:
    // The last hand-over of a sensor, or of several that continue each other.
    struct Track {
        bool begun = false;
        std::size_t lane = 0;
        std::optional<std::uint32_t> frame;
        std::size_t empty = 0;       // since then
        std::int64_t usualSkip = 0;  // numbers between its hand-overs: those of other sensors
        std::int64_t lastSkip = 0;
        std::size_t queue = 0;
        lsc::Samples samples;
        double periodNs = 0;

        void follow(const HandOver& batch);
        // How badly `batch` continues it: below 1 it may well do.
        double distance(const HandOver& batch) const;
        double distanceBut(const HandOver& batch) const;  // ... whatever its frame number
        // Whether `batch`, whatever its frame number, may well be the next with samples.
        bool mayPrecede(const HandOver& batch) const;
        std::int64_t skipped(const HandOver& batch) const;  // frame numbers between it and `batch`
        std::int64_t owed(const HandOver& batch) const;     // ... that nothing else explains; -1: unknown
        double sampleDistance(lsc::Samples next) const;
        double staleDistance(const HandOver& batch) const;
    };
    struct Monitor {
        std::int32_t type = 0;
        Track track;
    };
    using Sensors = std::vector<std::int32_t>;
    struct ComingCall {
        const Call* call = nullptr;
        std::optional<std::int32_t> owner;  // of a hand-over
    };
    using Coming = std::vector<ComingCall>;
    // What is known of a sensor's next hand-over with samples.
    struct Next {
        std::int32_t sensor = 0;
        std::int64_t owed = -1;   // hand-overs without samples that its number wants before it; -1: unknown
        std::size_t place = 0;    // in what lies ahead
        std::size_t chances = 1;  // hand-overs without samples until then, of any sensor
        std::size_t uses = 0;     // of the thread
        bool isSure() const { return owed > 0 && chances <= static_cast<std::size_t>(owed); }
    };

    Sensors candidates(const HandOver& batch) const;
    Choice chooseEmpty(const Sensors& among, const HandOver& batch, const Timeline& ahead) const;
    static std::optional<std::int32_t> ownerOf(const HandOver& batch, const Sensors& among);
    static Coming coming(const Sensors& among, const Timeline& ahead);
    Next nextOf(std::int32_t sensor, const HandOver& batch, const Coming& coming) const;
    std::size_t uses(std::int32_t sensor, std::size_t lane, const Coming& coming) const;
    bool beginsLater(std::int32_t sensor, const Timeline& ahead) const;
    std::optional<std::int32_t> followed(const HandOver& batch, const Sensors& among, const Timeline& ahead) const;

    std::map<std::int32_t, Monitor> mMonitors;
    std::map<std::pair<std::size_t, std::int32_t>, std::size_t> mUses;  // of a lane by a sensor, with samples
};

}  // namespace replay::import
