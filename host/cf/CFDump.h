// A tree of named values that a procedure fills to show what it read; the
// command line prints it as JSON (a debugging aid).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

class CFDump final {
public:
    using Scalar = std::variant<std::nullptr_t, bool, std::int64_t, double, std::string>;
    enum Kind { kScalar, kObject, kArray };

    CFDump() = default;
    static CFDump Object() { return CFDump(kObject); }
    static CFDump Array() { return CFDump(kArray); }

    // Object members, in insertion order. Each returns the member.
    CFDump& Set(std::string_view key, CFDump value);
    CFDump& SetObject(std::string_view key) { return Set(key, Object()); }
    CFDump& SetArray(std::string_view key) { return Set(key, Array()); }

    // Array items. Each returns the item.
    CFDump& Push(CFDump value);
    CFDump& PushObject() { return Push(Object()); }

    Kind GetKind() const { return fKind; }
    const Scalar& GetScalar() const { return fScalar; }
    const std::vector<std::pair<std::string, CFDump>>& Members() const { return fMembers; }
    const std::vector<CFDump>& Items() const { return fItems; }

    explicit CFDump(Scalar value) : fKind(kScalar), fScalar(std::move(value)) {}
    // Convenience for the common scalar kinds.
    CFDump(std::nullptr_t) : CFDump(Scalar(nullptr)) {}
    CFDump(int value) : CFDump(Scalar(std::int64_t{value})) {}
    CFDump(long value) : CFDump(Scalar(std::int64_t{value})) {}
    CFDump(long long value) : CFDump(Scalar(std::int64_t{value})) {}
    CFDump(unsigned long value) : CFDump(Scalar(static_cast<std::int64_t>(value))) {}
    CFDump(double value) : CFDump(Scalar(value)) {}
    CFDump(bool value) : CFDump(Scalar(value)) {}
    CFDump(const char* value) : CFDump(Scalar(std::string(value))) {}
    CFDump(std::string value) : CFDump(Scalar(std::move(value))) {}
    CFDump(std::string_view value) : CFDump(Scalar(std::string(value))) {}

private:
    explicit CFDump(Kind kind) : fKind(kind) {}

    Kind fKind = kScalar;
    Scalar fScalar;
    std::vector<std::pair<std::string, CFDump>> fMembers;
    std::vector<CFDump> fItems;
};
