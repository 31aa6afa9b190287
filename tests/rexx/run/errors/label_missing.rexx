signal nowhere
