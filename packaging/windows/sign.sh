#!/usr/bin/env bash
# Signs files for Windows in place, if a certificate is given; else does nothing.
#   packaging/windows/sign.sh FILE...
# RUVO_SIGN_CERTIFICATE names the certificate and its chain (PEM), RUVO_SIGN_KEY its key (PEM), or a PKCS #11 URI.
# RUVO_SIGN_PASSWORD_FILE names the file with the key's password, RUVO_SIGN_TIME_SERVER the server (RFC 3161) that
# confirms the time, without which a signature is worth nothing once the certificate has expired.
set -euo pipefail
[ -n "${RUVO_SIGN_CERTIFICATE:-}" ] || exit 0
words=(-certs "$RUVO_SIGN_CERTIFICATE" -key "${RUVO_SIGN_KEY:?names the key of the certificate}" -h sha256 -n ruvo)
[ -z "${RUVO_SIGN_PASSWORD_FILE:-}" ] || words+=(-readpass "$RUVO_SIGN_PASSWORD_FILE")
[ -z "${RUVO_SIGN_TIME_SERVER:-}" ] || words+=(-ts "$RUVO_SIGN_TIME_SERVER")
log=$(mktemp)
trap 'rm -f "$log"' EXIT
for file in "$@"; do
    rm -f "$file.signed"
    if ! osslsigncode sign "${words[@]}" -in "$file" -out "$file.signed" >"$log" 2>&1; then
        cat "$log" >&2
        echo "sign.sh: $file could not be signed" >&2
        exit 1
    fi
    mv "$file.signed" "$file"
done
