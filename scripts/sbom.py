#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Prints the bill of materials of a release as SPDX 2.3 in JSON.

It names the source tarball, the packages that were built from it, and the packages that these need,
with the versions that they were built with.

usage: sbom.py VERSION SECONDS TARBALL BUILDINFO PACKAGE...
SECONDS is the time of the release, since 1970.
"""

import hashlib
import json
import re
import subprocess
import sys
import time
from pathlib import Path

NAMESPACE = "https://spdx.org/spdxdocs/libmdm-common-"


def identifier(name):
    return "SPDXRef-" + re.sub(r"[^A-Za-z0-9.-]", "-", name)


def sha256(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


def fields(package):
    command = ["dpkg-deb", "--show", "--showformat", "${Package}\t${Version}\t${Depends}", package]
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout.split("\t")


def names_of(depends):
    """The first name of each alternative of a field like Depends."""
    return [part.split()[0] for part in depends.split(",") if part.strip()]


def built_with(buildinfo):
    """The versions of all packages that a build had, by name."""
    text = buildinfo.read_text(encoding="utf-8")
    installed = text.split("Installed-Build-Depends:\n")[1].split("\nEnvironment:")[0]
    return dict(re.findall(r"^ (\S+?)(?::\w+)? \(= (\S+)\)", installed, re.MULTILINE))


def described(name, version, **more):
    return {
        "SPDXID": identifier(name),
        "name": name,
        "versionInfo": version,
        "downloadLocation": "NOASSERTION",
        "filesAnalyzed": False,
        "licenseConcluded": "NOASSERTION",
        "licenseDeclared": "NOASSERTION",
        "copyrightText": "NOASSERTION",
        **more,
    }


def own(name, version, path):
    return described(
        name,
        version,
        packageFileName=path.name,
        checksums=[{"algorithm": "SHA256", "checksumValue": sha256(path)}],
        licenseConcluded="Apache-2.0",
        licenseDeclared="Apache-2.0",
        copyrightText="2026 the libmdm-common authors",
    )


def relation(name, kind, other):
    return {
        "spdxElementId": identifier(name),
        "relationshipType": kind,
        "relatedSpdxElement": identifier(other),
    }


def bill(version, seconds, tarball, buildinfo, packages):
    source = tarball.name
    materials = {source: own(source, version, tarball)}
    relations = [relation("DOCUMENT", "DESCRIBES", source)]
    needed = {}
    for package in packages:
        name, package_version, depends = fields(package)
        materials[name] = own(name, package_version, package)
        relations.append(relation(name, "GENERATED_FROM", source))
        needed[name] = names_of(depends)
    versions = built_with(buildinfo)
    for name, others in needed.items():
        for other in others:
            # What only an installation needs was not there to build with.
            version_there = versions.get(other, "NOASSERTION")
            materials.setdefault(other, described(other, version_there))
            relations.append(relation(name, "DEPENDS_ON", other))
    return {
        "spdxVersion": "SPDX-2.3",
        "dataLicense": "CC0-1.0",
        "SPDXID": "SPDXRef-DOCUMENT",
        "name": f"libmdm-common-{version}",
        "documentNamespace": f"{NAMESPACE}{version}-{sha256(tarball)}",
        "creationInfo": {
            "created": time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(seconds)),
            "creators": ["Organization: the libmdm-common authors"],
        },
        "packages": list(materials.values()),
        "relationships": relations,
    }


def main():
    version, seconds, tarball, buildinfo, *packages = sys.argv[1:]
    materials = bill(
        version, int(seconds), Path(tarball), Path(buildinfo), [Path(name) for name in packages]
    )
    json.dump(materials, sys.stdout, indent=2)
    print()


if __name__ == "__main__":
    main()
