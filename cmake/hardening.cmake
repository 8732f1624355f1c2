# What the programs that users run are built with against what they may be fed with: each flag where compiler and target
# have it. It is not for debugging, sanitizers or the counting of covered lines, which look for faults in another way.
include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)
include(CheckLinkerFlag)

function(ruvo_compile_option) # (The resource compiler of Windows builds knows none of them.)
    add_compile_options("$<$<COMPILE_LANGUAGE:C,CXX>:${ARGN}>")
endfunction()

# (On Windows large frames touch each of their pages anyway, and for 64 bits g++ 12 breaks down at the option for that.)
set(stack_clash -fstack-clash-protection)
if(WIN32)
    set(stack_clash "")
endif()
# (The last two check where jumps lead to and returns come from, of x86 and of arm64. What is linked with start files that do
# not mark where jumps may lead to, such as those of Debian 12 for arm64, has its returns checked alone.)
set(CMAKE_REQUIRED_FLAGS -Werror)
foreach(flag -fstack-protector-strong ${stack_clash} -fcf-protection -mbranch-protection=standard)
    string(MAKE_C_IDENTIFIER RUVO_HAS${flag} known)
    check_cxx_compiler_flag(${flag} ${known})
    if(${known})
        ruvo_compile_option(${flag})
        add_link_options(${flag}) # where the first one needs a library
    endif()
endforeach()
foreach(flag -Wl,-z,relro -Wl,-z,now)
    string(MAKE_C_IDENTIFIER RUVO_HAS${flag} known)
    check_linker_flag(CXX ${flag} ${known})
    if(${known})
        add_link_options(${flag})
    endif()
endforeach()
ruvo_compile_option(-D_GLIBCXX_ASSERTIONS)

# The highest level of checked copies that the C library has, if need be with a library of their own. Flags that came from
# elsewhere may name another level.
set(checked_copy "#include <cstring>
int main(int count, char** texts) {
    char copy[8];
    std::strcpy(copy, texts[count - 1]);
    return copy[0];
}")
set(attempts 3 "3 -lssp" 2 "2 -lssp")
foreach(attempt IN LISTS attempts)
    string(REGEX MATCH "^([0-9])( .*)?$" parts ${attempt})
    set(options -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=${CMAKE_MATCH_1})
    set(library ${CMAKE_MATCH_2})
    list(JOIN options " " flags)
    set(CMAKE_REQUIRED_FLAGS "-Werror -O2 ${flags}")
    set(CMAKE_REQUIRED_LIBRARIES ${library})
    string(MAKE_C_IDENTIFIER "RUVO_FORTIFY_${attempt}" known)
    check_cxx_source_compiles("${checked_copy}" ${known})
    if(${known})
        ruvo_compile_option(${options})
        string(APPEND CMAKE_CXX_STANDARD_LIBRARIES "${library}")
        break()
    endif()
endforeach()
unset(CMAKE_REQUIRED_FLAGS)
unset(CMAKE_REQUIRED_LIBRARIES)

# The same bytes from whatever folder the source lies in.
check_cxx_compiler_flag(-ffile-prefix-map=/a=b RUVO_HAS_file_prefix_map)
if(RUVO_HAS_file_prefix_map)
    ruvo_compile_option(-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.)
endif()
