#!/bin/sh
# SPDX-License-Identifier: MIT
# Makes the certificates of the TLS tests in the folder given: an authority that the tests trust, certificates
# of its making, and one of an authority that nobody trusts. Each NAME.pem has its key in NAME.key.
set -eu
cd "$1"

authority() {
    openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 3650 -subj "/CN=$1" \
        -addext basicConstraints=critical,CA:TRUE -keyout "$1.key" -out "$1.pem"
}

# certificate NAME AUTHORITY DAYS SUBJECT-ALTERNATIVE-NAME
certificate() {
    openssl req -new -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -subj "/CN=$1" \
        -keyout "$1.key" -out "$1.csr"
    printf 'subjectAltName=%s\n' "$4" > "$1.ext"
    openssl x509 -req -in "$1.csr" -CA "$2.pem" -CAkey "$2.key" -CAcreateserial -days "$3" \
        -extfile "$1.ext" -out "$1.pem"
}

authority authority
authority stranger
certificate good authority 3650 "IP:127.0.0.1,DNS:localhost"
certificate expired authority -1 "IP:127.0.0.1,DNS:localhost"
certificate wronghost authority 3650 "DNS:elsewhere.example"
certificate unknown stranger 3650 "IP:127.0.0.1,DNS:localhost"
