package com.quenda.skiff.trellis.server;

import java.lang.annotation.ElementType;
import java.lang.annotation.Retention;
import java.lang.annotation.RetentionPolicy;
import java.lang.annotation.Target;
import java.util.List;
import org.junit.jupiter.api.AfterAll;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.TestInfo;

/**
 * A test class that runs on one started session for all its tests: the session is started
 * before the first test, with the flags of the class's {@link Connect} (all false without one),
 * and ended, with the emulator's end of session, after the last unless a test ended it.
 */
abstract class OneSessionTest {
    /** The flags of the dispatcher's connect for the session of the class. */
    @Retention(RetentionPolicy.RUNTIME)
    @Target(ElementType.TYPE)
    @interface Connect {
        boolean invokeJavaCallbacksForScopingUpdates() default false;
        boolean setLocationIDFieldInCallbacks() default false;
        boolean syncLocationIDFieldInSubLocations() default false;
        boolean syncLocationIDFieldInNetworks() default false;
    }

    protected static TestSession session;
    protected static RecordingDispatcher dispatcher;
    protected static QxwInterface client;
    protected static EmulatorControl control;

    @BeforeAll
    static void startSession(TestInfo info) throws Exception {
        Connect flags = info.getTestClass().orElseThrow().getAnnotation(Connect.class);
        session = TestSession.started(flags);
        dispatcher = session.dispatcher;
        client = session.client;
        control = new EmulatorControl();
    }

    /** What the dispatcher recorded while `action` ran. */
    static List<String> logOf(TestNative.Action action) throws Exception {
        int before = dispatcher.log().size();
        action.run();
        List<String> log = dispatcher.log();
        return log.subList(before, log.size());
    }

    /** The callbacks the emulator control commands make, once each has been delivered. */
    static List<String> callbacks(String... commands) throws Exception {
        return logOf(() -> {
            for (String command : commands) control.ok(command);
            control.ok("sync");
        });
    }

    /** What the action writes on standard error with the client's verbose mode on. */
    static String verbose(TestNative.Action action) throws Exception {
        client.open(false, true, false);
        try {
            return TestNative.captureStderr(action);
        } finally {
            client.open(false, false, false);
        }
    }

    @AfterAll
    static void endSession() throws Exception {
        if (!session.ended()) session.end(control);
        control.close();
    }
}
