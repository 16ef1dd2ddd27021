"""./dev tune: measures a program at several factors and recommends one."""
