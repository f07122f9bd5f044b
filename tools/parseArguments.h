// What every program does with its arguments.
#pragma once

#include <CLI/CLI.hpp>
#include <cmath>
#include <iostream>
#include <string>

/// What is wrong with the text of a number that must be above 0; empty when nothing is.
inline std::string checkPositive(const std::string& text) {
  double value = 0.0;
  if (CLI::detail::lexical_cast(text, value) && value > 0.0 && std::isfinite(value)) return "";
  return "'" + text + "' is not a positive number";
}

/// Parses the arguments into the options of `app`. False when the program is to end with success,
/// because help or the version was asked for and has been printed. Throws an `InputError` that says
/// why the arguments cannot be understood and where to read more.
template <class InputError>
bool parseArguments(CLI::App& app, int argc, const char* const* argv) {
  try {
    app.parse(argc, argv);
    return true;
  } catch (const CLI::CallForHelp&) {
    std::cout << app.help();
  } catch (const CLI::CallForVersion& version) {
    std::cout << version.what() << "\n";
  } catch (const CLI::ParseError& error) {
    throw InputError(std::string(error.what()) + "; see " + app.get_name() + " --help");
  }
  return false;
}
