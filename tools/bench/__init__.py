"""./dev bench: what the library costs."""
