// An Objective-C host that joins a session with an activation code: objc-host CODE
#import <kivo/objc/KivoObjC.h>

static void show(ObjCResult* result) {
    if (result.status == ObjCResultStatusSuccess) {
        printf("Joined: %s.\n", [result.success.data UTF8String]);
    } else {
        printf("Not joined: %s (%s, %ld)\n", [result.error.message UTF8String], [result.error.errorName UTF8String],
               (long)result.error.code);
    }
}

int main(int argc, char** argv) {
    @autoreleasepool {
        NSString* const code = argc > 1 ? [NSString stringWithUTF8String:argv[1]] : @"123456";
        NSRunLoop* const loop = [NSRunLoop mainRunLoop];
        [KivoMainQueue attachToRunLoop:loop];

        // Where your identity service is, in the order of SDKEnv. No server answers at these addresses.
        KivoDeployment* const deployment = [[KivoDeployment new] autorelease];
        deployment.joinPages = @[
            @"https://identity.example/join.html", @"https://preproduction.identity.example/join.html",
            @"https://test.identity.example/join.html", @"https://development.identity.example/join.html"
        ];
        [deployment install];

        KivoAPIProvider* const session = [KivoSDK loadForProviderWithKey:@"EXAMPLE-KEY" version:@"18"];
        AcquisitionConfig* const config = [[[AcquisitionConfig alloc] initWithEnviroment:SDKEnvTEST
                                                                        kivo_app_doclist:@"PASSPORT"
                                                                       kivo_expire_grace:@"P6M"
                                                                      kivo_facematch_min:@"0.8"
                                                                        kivo_doc_issuers:@"UTO"
                                                                             kivo_images:@"face"] autorelease];

        __block BOOL isAnswered = NO;
        [session joinForCode:code
                      config:config
                    response:^(ObjCResult* result) {
                        // The answer comes on the library's thread; the rest of the program lives on the main one.
                        [[NSOperationQueue mainQueue] addOperationWithBlock:^{
                            show(result);
                            isAnswered = YES;
                        }];
                    }];
        while (!isAnswered) {
            @autoreleasepool {
                [loop runMode:NSDefaultRunLoopMode beforeDate:[NSDate distantFuture]];
            }
        }
    }
    return 0;
}
