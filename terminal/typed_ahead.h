// What was typed ahead: in which mode of the terminal it came, and where its lines end.

#pragma once

#include <deque>
#include <functional>

namespace lineup {

/// The bytes in the terminal's input queue. In its usual mode, the one in which the console found
/// it, canonical as a rule, ICRNL makes a Return a line feed as it is received; in the mode for
/// editing the two are kept apart: whoever reads it later has to know which mode that was.
class TypedAhead {
 public:
  /// There are `count` bytes now. What is new of them came in the usual mode, or in that for
  /// editing; where there are fewer, another program has read the first ones.
  void thereAre(int count, bool usualMode);

  /// How many there were then, without those that were read since.
  int count() const { return count_; }

  /// The first byte has been read. Returns whether it came in the usual mode.
  bool take();

 private:
  struct Bytes {
    int count;
    bool usualMode;
  };
  void drop(int count);

  std::deque<Bytes> bytes_{};
  int count_ = 0;
};

/// Where lines end with Return and line feed, as in a text that comes from elsewhere and is pasted,
/// the two are one. Finds the line feeds that belong to the Return before them.
///
/// In the terminal's usual mode a Return looks like a line feed. What then decides is what people
/// do not do: they send no line feed, and have nothing more typed at once after a Return.
///
/// A terminal may send a Return in place of a line feed that is pasted. Within a paste of which it
/// marks beginning and end, two Returns are one end, too.
class LineEnds {
 public:
  struct End {
    char byte;          ///< a Return or a line feed
    bool usualMode;     ///< in which it came
    bool atOnce;        ///< whether it came at once after the byte before it
    bool moreFollowed;  ///< whether something came at once after it
  };

  /// A line has ended so.
  void ended(const End& end);

  /// Nothing belongs to that end any more.
  void forget() { isOpen_ = false; }

  /// Whether what comes now is marked as pasted.
  void setInPaste(bool inPaste) { inPaste_ = inPaste; }
  bool inPaste() const { return inPaste_; }

  /// Whether `byte`, the next one, belongs to that end. `moreFollows` says whether something comes
  /// at once after it.
  bool areCompletedBy(char byte, bool usualMode, const std::function<bool()>& moreFollows);

 private:
  enum class Told { Nothing, Returns, LineFeeds };

  Told last_ = Told::Nothing;  ///< with which the last line ended where one can tell
  bool isOpen_ = false;        ///< whether the next byte may belong to `end_`
  bool inPaste_ = false;
  End end_{};
};

}  // namespace lineup
