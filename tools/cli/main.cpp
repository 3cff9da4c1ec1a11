// lsc_replay: plays a recorded session against the library on a workstation.

#include <exception>
#include <iostream>
#include <new>
#include <stdexcept>
#include <string>

#include <CLI/CLI.hpp>

#include "tools/cli/AccuracyCommand.h"
#include "tools/cli/CompareCommand.h"
#include "tools/cli/ImportCommand.h"
#include "tools/cli/PlayCommand.h"
#include "tools/session/Errors.h"

namespace {

enum ExitStatus : int {
    kDone = 0,
    kFailed = 1,      // also for a check or a comparison that finds a difference
    kBadSession = 2,  // also for a command line that asks for nothing sensible
};

}  // namespace

int main(int argc, char** argv) {
    replay::PlayArguments arguments;
    CLI::App app("Plays a recorded session against the lens-shading customisation library.", "lsc_replay");
    app.set_version_flag("--version", std::string("lsc_replay ") + LSC_VERSION);
    replay::addPlayOptions(app, arguments);
    replay::addAccuracyCommand(app);
    bool alike = true;
    replay::addCompareCommand(app, alike);
    replay::import::addImportCommand(app);
    try {
        app.parse(argc, argv);
        if (!app.get_subcommands().empty()) return alike ? kDone : kFailed;  // it has run
        if (arguments.session.empty()) throw CLI::RequiredError("SESSION");
        return replay::runPlay(arguments) ? kDone : kFailed;
    } catch (const CLI::RuntimeError& error) {
        return error.get_exit_code();  // a subcommand's own, which has said why
    } catch (const CLI::ParseError& error) {
        const bool asked = app.exit(error) == 0;  // for help or the version
        const bool surplus = dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr;
        if (surplus && !arguments.check.empty()) std::cerr << replay::kCheckForm << '\n';
        if (!std::cout.flush()) std::cerr << "lsc_replay: standard output cannot be written\n";
        return !asked ? kBadSession : std::cout ? kDone : kFailed;
    } catch (const replay::SessionError& error) {
        std::cerr << error.what() << '\n';
        return kBadSession;
    } catch (const std::invalid_argument& error) {
        std::cerr << "lsc_replay: " << error.what() << '\n';
        return kBadSession;
    } catch (const std::bad_alloc&) {
        std::cerr << "lsc_replay: not enough memory\n";
        return kFailed;
    } catch (const std::exception& error) {
        std::cerr << "lsc_replay: " << error.what() << '\n';
        return kFailed;
    }
}
