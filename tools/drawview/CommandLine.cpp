#include "tools/drawview/CommandLine.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <string_view>

#include <kilnbase/version.h>

#include "tools/parseArguments.h"

namespace drawview {

namespace {

constexpr const char* kDescription =
    R"(Shows, in the browser, the geometry that programs under development send.

A program sends frames with KilnDebugDrawProtocol: points, lines, labels, curves, surfaces, meshes.
Senders are served one after the other; one that crashes makes room for the next. The page stands on
this machine alone, under an address that nobody can guess; whoever knows it sees the frames.)";

constexpr const char* kFooter = R"(
The frames take at most 512 MiB of memory: the oldest go. A frame that is larger alone is dropped, and
standard error says so. A recording holds all others. It is whole when the program is told to end
(Ctrl-C, SIGTERM, the end of the console); a kill may cost the frame that was being written. A replay
reads the frames from the file and shows all of them.

Without an ADDRESS only programs of this user on this machine can send. Whoever reaches ADDRESS can
send points, lines and labels. Objects and meshes travel as files, which are read only for programs of
this user on this machine.

Standard output tells the address of the page, and where senders are waited for. Port 0 lets the
system choose.

Exit code: 0 when the program was told to end, or the page is exported; 1 when a recording is damaged
(what is whole of it is shown or exported, and standard error tells the places); 2 when the command
line cannot be understood, or something cannot be read, written or served.

Examples:
  $ drawview --open
  $ drawview --listen 29711 --record pass2.kilndraw
  $ drawview --listen 29711 --record pass2.kilndraw --once    (started by the program that sends)
  $ drawview --replay pass2.kilndraw --open
  $ drawview --replay pass2.kilndraw --export pass2.html)";

int portOf(std::string_view text) {
  constexpr int kMostPort = 65535;
  int port = -1;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
  if (error != std::errc() || end != text.data() + text.size() || port < 0 || port > kMostPort)
    throw InputError("\"" + std::string(text) + "\" is no port, which is 0 to 65535");
  return port;
}

// Takes [ADDRESS:]PORT apart. An address with colons stands in brackets.
void readListen(std::string_view text, Options& options) {
  const std::size_t colon = text.rfind(':');
  options.listenPort = portOf(text.substr(colon + 1));  // npos + 1 is 0
  if (colon == std::string_view::npos) return;
  std::string_view host = text.substr(0, colon);
  if (host.starts_with('[') && host.ends_with(']'))
    host = host.substr(1, host.size() - 2);
  else if (host.find(':') != std::string_view::npos)
    throw InputError("an address with colons stands in brackets: [::1]:29710");
  if (host.empty()) throw InputError("there is no address before the colon of --listen");
  options.listenHost = host;
}

}  // namespace

std::optional<Options> parseCommandLine(int argc, const char* const* argv) {
  Options options;
  std::string listenText;
  std::string httpText;
  const auto isName = [](const std::string& text) {
    return std::string(text.empty() ? "an empty name names no file" : "");
  };
  CLI::App app(kDescription, "drawview");
  app.footer(kFooter);
  app.get_formatter()->column_width(32);
  app.get_formatter()->label("Excludes", "| not with");
  app.get_formatter()->label("Needs", "| only with");
  app.set_version_flag("--version", "drawview " KILNBASE_VERSION_STRING, "Tell the version");
  auto* const listen =
      app.add_option("--listen", listenText, "Where to wait for senders (127.0.0.1:29710)")
          ->option_text("[ADDRESS:]PORT");
  app.add_option("--http", httpText, "Port of the page (0)")->option_text("PORT");
  auto* const record =
      app.add_option("--record", options.record, "Write every frame into a new file")
          ->option_text("FILE")
          ->check(isName);
  auto* const open = app.add_flag("--open", options.open, "Show the page in the browser");
  auto* const replay =
      app.add_option("--replay", options.replay, "Show a recording, and wait for no senders")
          ->option_text("FILE")
          ->check(isName)
          ->excludes(listen, record);
  app.add_option("--export", options.exportTo,
                 "Write the recording as a page that needs no server, and end")
      ->option_text("PAGE.html")
      ->check(isName)
      ->needs(replay)
      ->excludes(open);
  app.add_flag("--once", options.once,
               "End when the first sender has gone, or none has come for 30 s")
      ->excludes(replay);
  app.add_flag("--force", options.force, "Overwrite the file of --record or --export");
  if (!parseArguments<InputError>(app, argc, argv)) return std::nullopt;
  if (!listenText.empty()) readListen(listenText, options);
  if (!httpText.empty()) options.httpPort = portOf(httpText);
  return options;
}

}  // namespace drawview
