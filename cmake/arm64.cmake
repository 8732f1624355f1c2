# Cross-building the Debian package for small machines; tests/machine/arm64.sh unpacks the libraries and runs the programs.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(RUVO_DEBIAN_ARCHITECTURE arm64)

# Of the libraries of that machine, these two; the headers in a folder without those of the C library, which are the compiler's.
set(root ${CMAKE_CURRENT_LIST_DIR}/../build/machine/arm64)
set(libraries ${root}/usr/lib/aarch64-linux-gnu)
set(SQLite3_INCLUDE_DIR ${root}/headers CACHE PATH "")
set(SQLite3_LIBRARY ${libraries}/libsqlite3.so CACHE FILEPATH "")
set(OPENSSL_INCLUDE_DIR ${root}/headers CACHE PATH "")
set(OPENSSL_CRYPTO_LIBRARY ${libraries}/libcrypto.so CACHE FILEPATH "")
set(OPENSSL_SSL_LIBRARY ${libraries}/libssl.so CACHE FILEPATH "")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
