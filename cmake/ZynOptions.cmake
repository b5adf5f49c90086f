# zyn_options: warnings and sanitizers for the project's own code. -ffp-contract=off is no warning but a promise: the
# demosaicing methods that work in floats give the same picture with every instruction set and compiler, which joined
# multiplications and additions would break.
add_library(zyn_options INTERFACE)
target_compile_options(zyn_options INTERFACE
  -Wall -Wextra -Wshadow -Wconversion -Wnon-virtual-dtor -Wcast-align -Wno-unused-command-line-argument
  -fno-math-errno -ffp-contract=off)
if(ZYN_WERROR)
  target_compile_options(zyn_options INTERFACE -Werror)
endif()
target_compile_definitions(zyn_options INTERFACE QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII)

if(ZYN_SANITIZE)
  add_compile_options(-fsanitize=${ZYN_SANITIZE} -fno-omit-frame-pointer -g1)
  add_link_options(-fsanitize=${ZYN_SANITIZE})
  if(ZYN_SANITIZE MATCHES undefined)
    add_compile_options(-fno-sanitize-recover=undefined)
  endif()
endif()
if(ZYN_BUILD_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
