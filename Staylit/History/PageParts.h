#pragma once

namespace staylit {

/// What every page of the history has: its look, and the little script that makes it handier. A
/// reader whose browser runs no script misses nothing.
///
/// The page allows exactly these two, by their hashes; so whoever changes one of them changes its
/// hash as well. A test compares them, and tells the right one.
struct PageParts {
  static const char* const kStyle;
  static const char* const kStyleHash;  ///< SHA-256 in base64.
  static const char* const kScript;
  static const char* const kScriptHash;
  /// The patterns that marks are filled with.
  static const char* const kPatterns;
  static const char* const kCup;
};

}  // namespace staylit
