#!/bin/sh
# SPDX-License-Identifier: MIT
# Makes the certificates of the TLS tests in the folder given: an authority that the tests trust, certificates
# of its making, and one of an authority that nobody trusts. Each NAME.pem has its key in NAME.key.
set -eu
cd "$1"

# An authority keeps a record of what it has signed; every OpenSSL lets one, and it alone, sign what has expired.
cat >authority.cnf <<'CONFIG'
[ca]
default_ca = tests
[tests]
database = issued.txt
new_certs_dir = .
rand_serial = yes
unique_subject = no
default_md = sha256
policy = any
[any]
commonName = supplied
CONFIG
: >issued.txt

authority() {
    openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 3650 -subj "/CN=$1" \
        -addext basicConstraints=critical,CA:TRUE -keyout "$1.key" -out "$1.pem"
}

# certificate NAME AUTHORITY LAST-YEAR SUBJECT-ALTERNATIVE-NAME
certificate() {
    openssl req -new -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -subj "/CN=$1" \
        -keyout "$1.key" -out "$1.csr"
    printf 'subjectAltName=%s\n' "$4" > "$1.ext"
    openssl ca -batch -config authority.cnf -cert "$2.pem" -keyfile "$2.key" -startdate 20200101000000Z \
        -enddate "${3}1231000000Z" -extfile "$1.ext" -notext -in "$1.csr" -out "$1.pem"
}

authority authority
authority stranger
certificate good authority 2049 "IP:127.0.0.1,DNS:localhost"
certificate expired authority 2021 "IP:127.0.0.1,DNS:localhost"
certificate wronghost authority 2049 "DNS:elsewhere.example"
certificate unknown stranger 2049 "IP:127.0.0.1,DNS:localhost"
