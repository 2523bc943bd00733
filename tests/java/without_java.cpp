// A shared library without the entry for Java, as one built without ORVA_BUILD_JAVA is.
extern "C" int orvaWithoutJava() { return 1; }
