// The page without its data: page.html with its style, its script and the charting library. The build makes its source
// (EmbedPage.cmake).
#pragma once

#include <string_view>

namespace replay {

// Data, as JSON in which no "<" stands, belong in place of "@DATA@".
std::string_view pageTemplate();

}  // namespace replay
