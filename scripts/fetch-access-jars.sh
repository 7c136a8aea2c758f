#!/usr/bin/env bash
# Fetches the Access provider's Java libraries (the JDBC driver for Jet
# files and what it needs: the Jet file library, the in-memory SQL engine,
# commons-lang and commons-logging) from Maven Central into a cache folder
# outside the repository. The build records that folder; nothing is vendored.
#
#   ZOLSDK_ACCESS_JARS   the folder (default ~/.cache/zolsdk/access-jars)
#   ZOLSDK_ACCESS_DRIVER the driver's Maven coordinates (default: the version the
#                        provider is tested with)
#
# Safe to run again: when the folder already holds the jars of the same
# coordinates it returns at once, without starting Maven.
set -euo pipefail

COORDS="${ZOLSDK_ACCESS_DRIVER:-io.github.spannm:ucanaccess:5.1.5}"
DEST="${ZOLSDK_ACCESS_JARS:-${XDG_CACHE_HOME:-$HOME/.cache}/zolsdk/access-jars}"
STAMP="$DEST/.coordinates"

complete() {
  [ -f "$STAMP" ] && [ "$(cat "$STAMP")" = "$COORDS" ] || return 1
  ls "$DEST"/ucanaccess-*.jar "$DEST"/jackcess-*.jar "$DEST"/hsqldb-*.jar >/dev/null 2>&1
}

if complete; then
  echo "access jars: $DEST (already there)"
  exit 0
fi

command -v mvn >/dev/null || { echo "maven (mvn) is not installed; run scripts/install-deps.sh" >&2; exit 1; }

IFS=: read -r GROUP ARTIFACT VERSION <<<"$COORDS"
WORK="$(mktemp -d)"
trap 'rm -rf "$WORK"' EXIT
# A throw-away project whose only dependency is the driver: Maven resolves
# the rest of the tree and copies every runtime jar into one folder.
cat >"$WORK/pom.xml" <<POM
<project xmlns="http://maven.apache.org/POM/4.0.0">
  <modelVersion>4.0.0</modelVersion>
  <groupId>zolsdk.build</groupId>
  <artifactId>access-jars</artifactId>
  <version>1</version>
  <packaging>pom</packaging>
  <dependencies>
    <dependency>
      <groupId>$GROUP</groupId>
      <artifactId>$ARTIFACT</artifactId>
      <version>$VERSION</version>
    </dependency>
  </dependencies>
</project>
POM

mkdir -p "$DEST"
rm -f "$DEST"/*.jar "$STAMP"
mvn -B -q -Dstyle.color=never -f "$WORK/pom.xml" org.apache.maven.plugins:maven-dependency-plugin:3.6.1:copy-dependencies \
  -DincludeScope=runtime -DoutputDirectory="$DEST"
echo "$COORDS" >"$STAMP"
complete || { echo "the jars did not arrive in $DEST" >&2; exit 1; }
echo "access jars: $DEST"
ls -1 "$DEST"/*.jar | sed 's|.*/|  |'
