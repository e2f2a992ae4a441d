#include "UniqueWord.h"

#include <random>
#include <string_view>

namespace veltrane
{

std::string uniqueWord()
{
    constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyz0123456789";
    constexpr int length = 12;
    std::random_device device; // asks the system; processes that were forked do not share its state
    std::uniform_int_distribution<std::size_t> place(0, letters.size() - 1);
    std::string word;
    for (int i = 0; i < length; ++i)
    {
        word += letters[place(device)];
    }
    return word;
}

} // namespace veltrane
