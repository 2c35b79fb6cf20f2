#pragma once

#include <type_traits>
#include <utility>

namespace ko::filesystem::detail {

/// A copyable function that takes an `Argument` and returns whether to go on, or none. Takes every
/// such function, a std::function among them. Not a std::function itself, since `<functional>`
/// takes almost as long to compile as the headers of this library.
template <class Argument>
class callback {
    template <class Call>
    static constexpr bool fits = !std::is_same_v<std::decay_t<Call>, callback> &&
                                 std::is_invocable_r_v<bool, std::decay_t<Call>&, Argument>;

public:
    /// None.
    callback() = default;
    /// A copy of `call`; none if that is empty or null.
    template <class Call, std::enable_if_t<fits<Call>, bool> = true>
    callback(Call&& call) {
        if (!is_none(call)) held_ = new holder<std::decay_t<Call>>(std::forward<Call>(call));
    }
    callback(callback const& other)
        : held_(other.held_ == nullptr ? nullptr : other.held_->copy()) {}
    callback(callback&& other) noexcept : held_(std::exchange(other.held_, nullptr)) {}
    callback& operator=(callback other) noexcept {
        std::swap(held_, other.held_);
        return *this;
    }
    ~callback() { delete held_; }

    explicit operator bool() const noexcept { return held_ != nullptr; }
    /// There must be a function.
    bool operator()(Argument argument) const { return held_->call(argument); }

private:
    struct function {
        virtual ~function() = default;
        virtual function* copy() const = 0;
        virtual bool call(Argument argument) = 0;
    };
    template <class Call>
    struct holder final : function {
        explicit holder(Call call) : held(std::move(call)) {}
        function* copy() const override { return new holder(held); }
        bool call(Argument argument) override { return held(argument); }
        Call held;
    };

    /// Functions without a capture convert to bool, too, but only implicitly.
    template <class Call>
    static bool is_none(Call const& call) {
        if constexpr (std::is_pointer_v<Call>)
            return call == nullptr;
        else if constexpr (std::is_constructible_v<bool, Call const&> &&
                           !std::is_convertible_v<Call const&, bool>)
            return !static_cast<bool>(call);
        else
            return false;
    }

    function* held_ = nullptr;
};

}  // namespace ko::filesystem::detail
