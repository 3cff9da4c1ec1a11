// lsc_replay: plays a recorded session against the library on a workstation.

#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>

#include <CLI/CLI.hpp>

#include "tools/replay/Errors.h"
#include "tools/replay/PlayCommand.h"
#include "tools/replay/import/ImportCommand.h"

namespace {

enum ExitStatus : int {
    kDone = 0,
    kFailed = 1,
    kBadSession = 2,  // also for a command line that asks for nothing sensible
};

}  // namespace

int main(int argc, char** argv) {
    replay::PlayArguments arguments;
    CLI::App app("Plays a recorded session against the lens-shading customisation library.", "lsc_replay");
    app.set_version_flag("--version", std::string("lsc_replay ") + LSC_VERSION);
    replay::addPlayOptions(app, arguments);
    replay::import::addImportCommand(app);
    try {
        app.parse(argc, argv);
        if (!app.get_subcommands().empty()) return kDone;  // it has run
        if (arguments.session.empty()) throw CLI::RequiredError("SESSION");
        replay::runPlay(arguments);
        return kDone;
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kDone : kBadSession;
    } catch (const replay::SessionError& error) {
        std::cerr << error.what() << '\n';
        return kBadSession;
    } catch (const std::invalid_argument& error) {
        std::cerr << "lsc_replay: " << error.what() << '\n';
        return kBadSession;
    } catch (const std::exception& error) {
        std::cerr << "lsc_replay: " << error.what() << '\n';
        return kFailed;
    }
}
