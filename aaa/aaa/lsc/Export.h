// Symbol visibility: the library is built with everything hidden but what LSC_EXPORT marks.
#pragma once

#define LSC_EXPORT [[gnu::visibility("default")]]
#define LSC_HIDDEN [[gnu::visibility("hidden")]]
