# Cross-building for a machine of the other byte order; tests/machine/s390x.sh unpacks its libraries and runs the tests.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR s390x)
set(CMAKE_C_COMPILER s390x-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER s390x-linux-gnu-g++)

# The headers are in a folder without those of the C library, which are the compiler's.
set(root ${CMAKE_CURRENT_LIST_DIR}/../build/machine/s390x)
set(OPENSSL_INCLUDE_DIR ${root}/headers CACHE PATH "")
set(OPENSSL_CRYPTO_LIBRARY ${root}/usr/lib/s390x-linux-gnu/libcrypto.so CACHE FILEPATH "")
set(OPENSSL_SSL_LIBRARY ${root}/usr/lib/s390x-linux-gnu/libssl.so CACHE FILEPATH "")
