"""./dev conform: whether programs can tell the library from the driver."""
