# ca_public_key: the digest of the update channel's key file, compiled into whatever links it. Executables alone do.
set(COLDANCHOR_PUBLIC_KEY "" CACHE FILEPATH "The channel's public key file (PEM); empty makes a development key pair")

set(key_file "${COLDANCHOR_PUBLIC_KEY}")
if(NOT key_file)
    set(key_folder ${PROJECT_BINARY_DIR}/dev_key)
    set(key_file ${key_folder}/update_public_key.pem)
    if(NOT EXISTS ${key_file})
        find_program(OPENSSL_PROGRAM openssl REQUIRED)
        file(MAKE_DIRECTORY ${key_folder})
        execute_process(
            COMMAND ${OPENSSL_PROGRAM} genpkey -quiet -algorithm RSA -pkeyopt rsa_keygen_bits:3072
                    -out ${key_folder}/update_private_key.pem
            ERROR_QUIET COMMAND_ERROR_IS_FATAL ANY)
        execute_process(
            COMMAND ${OPENSSL_PROGRAM} pkey -in ${key_folder}/update_private_key.pem -pubout -out ${key_file}
            COMMAND_ERROR_IS_FATAL ANY)
        message(STATUS "Made a development key pair in ${key_folder}")
    endif()
endif()

# What the launcher can read is the PEM text of an RSA key. All of them have the algorithm's name in the same place.
if(NOT EXISTS "${key_file}" OR IS_DIRECTORY "${key_file}")
    message(FATAL_ERROR "COLDANCHOR_PUBLIC_KEY: there is no file ${key_file}")
endif()
file(READ "${key_file}" key_text)
set(base64 "[A-Za-z0-9+/=\r\n]+")
if(key_text MATCHES "PRIVATE KEY")
    message(FATAL_ERROR "COLDANCHOR_PUBLIC_KEY: ${key_file} is a private key, which stays with the publisher. "
        "Name update_public_key.pem beside it")
elseif(NOT key_text MATCHES "-----BEGIN PUBLIC KEY-----${base64}ANBgkqhkiG9w0BAQEFAAO${base64}-----END PUBLIC KEY-----")
    message(FATAL_ERROR "COLDANCHOR_PUBLIC_KEY: ${key_file} holds no RSA public key (PEM, \"BEGIN PUBLIC KEY\")")
endif()

set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${key_file}")
file(SHA256 "${key_file}" COLDANCHOR_KEY_FINGERPRINT)
set(COLDANCHOR_PUBLIC_KEY_FILE "${key_file}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/key_fingerprint.cpp.in ${PROJECT_BINARY_DIR}/generated/key_fingerprint.cpp @ONLY)
add_library(ca_public_key OBJECT ${PROJECT_BINARY_DIR}/generated/key_fingerprint.cpp)
target_include_directories(ca_public_key PRIVATE ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(ca_public_key PRIVATE ca_options)
