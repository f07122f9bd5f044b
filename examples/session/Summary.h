// The table at the end of a session.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace session {

/// How a line of the table is meant.
enum class Tone { kPlain, kGood, kTrouble };

/// Lines of a name and what is told about it, in the order of adding.
class Summary {
 public:
  void add(const std::string& name, const std::string& text, Tone tone = Tone::kPlain);

  /// The lines, with the names in one column. `colours`: with the escape sequences of terminals.
  std::string text(bool colours) const;

 private:
  struct Line {
    std::string name;
    std::string text;
    Tone tone;
  };
  std::vector<Line> lines_;
};

/// "1 step", "2 steps", "12,000 points"; `noun` takes an s.
std::string counted(std::size_t number, const std::string& noun);

/// A time with three digits, such as "0.0123 s".
std::string secondsText(double seconds);

/// Five digits and the unit.
std::string lengthText(double length, const std::string& unit);

}  // namespace session
