// A row for each exposure asked for, printed as it comes.
#pragma once

#include <ostream>
#include <vector>

#include "tools/diagnose/Observer.h"

namespace replay {

class Table : public Observer {
public:
    // `out` must outlive the table.
    explicit Table(std::ostream& out) : mOut(out) {}

    void exposuresAsked(const std::vector<ExposureOutcome>& outcomes) override;

private:
    std::ostream& mOut;
    bool mHasHeader = false;
};

}  // namespace replay
