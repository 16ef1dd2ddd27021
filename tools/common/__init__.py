"""What all commands share."""
