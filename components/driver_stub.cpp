// Stands in for a driver of the distribution while a component is linked against its file name. It is empty: the build
// needs no driver package, and at run time the component loads the real driver.
