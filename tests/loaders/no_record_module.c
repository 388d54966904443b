// A shared object that is not a loader module: it lacks `image_loader`.
int fbc_test_not_a_loader = 1;
