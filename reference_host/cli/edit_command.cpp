// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// edit: the configuration's editor, a page in the browser that is served from here until Ctrl-C.
#include "cli/browser.h"
#include "cli/commands.h"
#include "cli/messages.h"
#include "cli/standard_output.h"
#include "editor/config_store.h"
#include "editor/editor_api.h"
#include "editor/preview.h"
#include "editor/server.h"
#include "media/demuxer.h"
#include "media/interrupt.h"

#include <chrono>
#include <filesystem>
#include <iostream>
#include <streambuf>
#include <string>
#include <system_error>
#include <thread>

namespace cli {
namespace {

/// Takes everything and keeps nothing, from any thread.
class NoText : public std::streambuf {
protected:
    int_type overflow(int_type byte) override { return traits_type::not_eof(byte); }
    std::streamsize xsputn(char const* /*text*/, std::streamsize count) override { return count; }
};

/// What the framework and the plugin say about half-typed configurations belongs on the page, not on the terminal.
class MutedCerr {
public:
    MutedCerr() : usual_(std::cerr.rdbuf(&noText_)) {}
    ~MutedCerr() { std::cerr.rdbuf(usual_); }
    MutedCerr(MutedCerr const&) = delete;
    MutedCerr& operator=(MutedCerr const&) = delete;

private:
    NoText noText_;
    std::streambuf* usual_;
};

void refuseWhatCannotBeEdited(EditOptions const& options)
{
    if (options.input == "-" || media::isLiveAddress(options.input)) {
        throw WrongUsage(options.input + ": the editor goes to any place of a clip; give a file");
    }
    if (options.config == "-") {
        throw WrongUsage("-c -: the editor saves the configuration; give a file");
    }
    for (std::string const& source : {options.input, options.telemetry.file}) {
        std::error_code notThere;
        if (std::filesystem::equivalent(source, options.config, notThere)) {
            throw WrongUsage(options.config + ": is read as clip or telemetry; give a configuration file");
        }
    }
}

/// Stops the server before what its threads use goes.
struct StopAtEnd {
    explicit StopAtEnd(editor::Server& serving) : server(serving) {}
    ~StopAtEnd() { server.stop(); }
    StopAtEnd(StopAtEnd const&) = delete;
    StopAtEnd& operator=(StopAtEnd const&) = delete;

    editor::Server& server;
};

void waitForInterrupt()
{
    constexpr std::chrono::milliseconds kLook(50);
    while (!media::interrupted()) {
        std::this_thread::sleep_for(kLook);
    }
}

}  // namespace

void runEdit(EditOptions const& options)
{
    refuseWhatCannotBeEdited(options);
    editor::ConfigStore store(options.config);
    store.load();
    editor::Server server(options.port);
    editor::Preview preview({options.input, options.telemetry, "", {}, options.look});
    std::string const token = editor::randomToken();
    std::string const pass = options.opensBrowser ? editor::randomToken() : "";
    editor::EditorApi api(preview, store);
    editor::RequestHandler handler(server.port(), token, pass, api.routes());
    MutedCerr const muted;
    StopAtEnd const stopAtEnd(server);
    server.start({[&handler](editor::Request const& head) { return handler.refuse(head); },
                  [&handler](editor::Request const& request) { return handler.answer(request); }});
    std::string const address = "http://127.0.0.1:" + std::to_string(server.port()) + "/?token=";
    writeLine(address + token);
    flushOutput();
    if (options.opensBrowser) {
        openInBrowser(address + pass);
    }
    waitForInterrupt();
}

}  // namespace cli
