# Files of debug symbols look like libraries without a name to CPack, and it would say so.
set(CMAKE_SUPPRESS_DEVELOPER_WARNINGS ON)
