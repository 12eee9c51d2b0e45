#pragma once

#include <cctype>
#include <set>
#include <string>
#include <vector>

namespace ocpan::testing {

// The string literals of one call in a source, in their order.
struct call_texts {
  std::string function;
  std::vector<std::string> texts;
};

// A token of C++ as far as it matters here: a name, a string literal's content, or a sign.
struct source_token {
  enum class kind { name, text, sign };
  kind what;
  std::string content;
};

// What a backslash and the character behind it stand for; other blanks count as a blank.
inline char unescaped(char c) {
  if (c == 'n') return '\n';
  return std::string("tvfr").find(c) == std::string::npos ? c : ' ';
}

// Reads a literal whose quote stands at `at`, and moves `at` behind it.
inline std::string read_literal(const std::string& source, std::size_t& at) {
  const char quote = source[at++];
  std::string content;
  while (at < source.size() && source[at] != quote) {
    if (source[at] == '\\') {
      content += unescaped(source[at + 1]);
      at += 2;
    } else {
      content += source[at++];
    }
  }
  ++at;
  return content;
}

// The tokens of a source, without comments, character literals and included names. String
// literals that stand side by side are one.
inline std::vector<source_token> tokens_of(const std::string& source) {
  using kind = source_token::kind;
  std::vector<source_token> tokens;
  const auto is_name = [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
  };
  for (std::size_t at = 0; at < source.size();) {
    const char c = source[at];
    if (source.compare(at, 2, "//") == 0 || c == '#') {
      at = source.find('\n', at);
    } else if (source.compare(at, 2, "/*") == 0) {
      at = source.find("*/", at) + 2;
    } else if (c == '"') {
      const std::string text = read_literal(source, at);
      if (!tokens.empty() && tokens.back().what == kind::text) {
        tokens.back().content += text;
      } else {
        tokens.push_back({kind::text, text});
      }
    } else if (c == '\'') {
      read_literal(source, at);
    } else if (is_name(c)) {
      std::string name;
      while (at < source.size() && is_name(source[at])) name += source[at++];
      tokens.push_back({kind::name, name});
    } else {
      if (std::isspace(static_cast<unsigned char>(c)) == 0) {
        tokens.push_back({kind::sign, std::string(1, c)});
      }
      ++at;
    }
  }
  return tokens;
}

// The calls of some functions with the literals between their brackets.
inline std::vector<call_texts> calls_in(const std::string& source,
                                        const std::set<std::string>& functions) {
  const std::vector<source_token> tokens = tokens_of(source);
  std::vector<call_texts> calls;
  for (std::size_t i = 0; i + 1 < tokens.size(); ++i) {
    if (tokens[i].what != source_token::kind::name || !functions.contains(tokens[i].content) ||
        tokens[i + 1].content != "(") {
      continue;
    }
    call_texts& call = calls.emplace_back();
    call.function = tokens[i].content;
    int depth = 0;
    for (std::size_t k = i + 1; k < tokens.size(); ++k) {
      if (tokens[k].what == source_token::kind::text) call.texts.push_back(tokens[k].content);
      if (tokens[k].what != source_token::kind::sign) continue;
      if (tokens[k].content == "(") ++depth;
      if (tokens[k].content == ")" && --depth == 0) break;
    }
  }
  return calls;
}

// All string literals of a source.
inline std::vector<std::string> literals_in(const std::string& source) {
  std::vector<std::string> literals;
  for (const source_token& token : tokens_of(source)) {
    if (token.what == source_token::kind::text) literals.push_back(token.content);
  }
  return literals;
}

}  // namespace ocpan::testing
