/// JsLiteral: a value of a JavaScript object literal, as hand-written diagram files use them
/// (unquoted keys, single or double quotes, comments, trailing commas, hexadecimal numbers),
/// and the reader that builds one from text with "FILE:LINE: what was expected" messages.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

struct JsMember;

struct JsValue {
    enum class Type { Null, Boolean, Number, String, Array, Object };

    Type type = Type::Null;
    bool boolean = false;
    double number = 0;
    std::string text;
    std::vector<JsValue> items;
    /// An object's members in the order of the file; a repeated key keeps both.
    std::vector<JsMember> members;
    /// The line the value starts on, for messages about its meaning.
    std::size_t line = 0;

    bool isString() const { return type == Type::String; }
    bool isNumber() const { return type == Type::Number; }
    bool isArray() const { return type == Type::Array; }
    bool isObject() const { return type == Type::Object; }
    /// The last member named key, or null (also for a value that is no object).
    const JsValue* member(std::string_view key) const;
};

/// One member of an object: its key and value.
struct JsMember {
    std::string key;
    JsValue value;
};

/// Reads one value (normally an object) filling all of text but white space, comments and an
/// optional final ';'. False with error set ("NAME:LINE: expected ...") otherwise. Nesting
/// deeper than v_maxJsDepth is an error rather than a risk to the stack.
[[nodiscard]] bool parseJsLiteral(std::string_view text, const char* name, JsValue& value,
                                  std::string& error);

constexpr int v_maxJsDepth = 200;
