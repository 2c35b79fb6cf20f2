#pragma once

namespace ko::filesystem::test_support {

/// Calls `use` with every text of up to `length` characters from `alphabet`.
template <class String, class Use>
void for_each_text(String const& alphabet, std::size_t length, Use use) {
    for (String text;;) {
        use(text);
        std::size_t i = 0;  // count up, digits from the left
        while (i < text.size() && text[i] == alphabet.back()) text[i++] = alphabet.front();
        if (i < text.size())
            text[i] = alphabet[alphabet.find(text[i]) + 1];
        else if (text.size() < length)
            text += alphabet.front();
        else
            return;
    }
}

}  // namespace ko::filesystem::test_support
