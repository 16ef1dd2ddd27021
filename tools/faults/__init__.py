"""./dev faults: brings about faults and looks whether they are survived."""
