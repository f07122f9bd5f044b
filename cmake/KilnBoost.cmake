# The headers of Boost, for Asio and Beast: the target kiln_boost, or none where they are missing. The
# folder of the headers is linked into the build tree by itself, so that the other headers beside it stay
# out of a build for another system.
include_guard(GLOBAL)

set(KILN_BOOST_HEADERS /usr/include/boost CACHE PATH "Folder of the headers of Boost")
if(NOT EXISTS ${KILN_BOOST_HEADERS}/beast.hpp)
  return()
endif()
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/boost)
file(CREATE_LINK ${KILN_BOOST_HEADERS} ${PROJECT_BINARY_DIR}/boost/boost SYMBOLIC)
find_package(Threads REQUIRED)
add_library(kiln_boost INTERFACE)
target_include_directories(kiln_boost SYSTEM INTERFACE ${PROJECT_BINARY_DIR}/boost)
target_link_libraries(kiln_boost INTERFACE Threads::Threads)
# GCC has coroutines, and so have the tools that read its code, in which Asio 1.74 does not expect them.
target_compile_definitions(kiln_boost INTERFACE BOOST_ASIO_HAS_CO_AWAIT BOOST_ASIO_HAS_STD_COROUTINE)
# Asio 1.74 calls std::exchange and does not include its header.
target_compile_options(kiln_boost INTERFACE "$<$<COMPILE_LANGUAGE:CXX>:SHELL:-include utility>")
if(WIN32)
  target_compile_definitions(kiln_boost INTERFACE _WIN32_WINNT=0x0A00)
  target_link_libraries(kiln_boost INTERFACE ws2_32 mswsock)
endif()
