# Install rules and the exported package.
