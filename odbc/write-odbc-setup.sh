#!/usr/bin/env bash
# Writes a private ODBC setup (odbcinst.ini and odbc.ini) into FOLDER and prints the value
# to give ODBCSYSINI, so that tests and the demo need no change under /etc and no root:
#
#   export ODBCSYSINI=$(odbc/write-odbc-setup.sh /tmp/my-odbc [DBF_DRIVER_PATH])
#
# It registers the driver name "SQLite3 ODBC Driver" on Debian's libsqlite3odbc.so and the
# data source "dBase for Zelmar" on the project's .dbf driver (DBF_DRIVER_PATH; by default
# the one in build/odbc_dbf/).
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
folder=${1:?usage: write-odbc-setup.sh FOLDER [DBF_DRIVER_PATH]}
dbf_driver=${2:-$here/../build/odbc_dbf/libnq_odbc_dbf.so}

sqlite_driver=""
for candidate in /usr/lib/*/odbc/libsqlite3odbc.so /usr/lib/odbc/libsqlite3odbc.so /usr/lib64/libsqlite3odbc.so; do
  if [[ -e "$candidate" ]]; then sqlite_driver=$candidate; break; fi
done
if [[ -z "$sqlite_driver" ]]; then
  echo "write-odbc-setup.sh: libsqlite3odbc.so not found (Debian package libsqliteodbc)" >&2
  exit 1
fi

mkdir -p "$folder"
folder=$(cd "$folder" && pwd)
sed -e "s|@SQLITE_DRIVER@|$sqlite_driver|g" -e "s|@DBF_DRIVER@|$dbf_driver|g" \
  "$here/odbcinst.ini.in" > "$folder/odbcinst.ini"
cp "$here/odbc.ini.in" "$folder/odbc.ini"
echo "$folder"
